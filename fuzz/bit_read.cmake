tavi_add_fuzzer(bit_read ${CMAKE_CURRENT_LIST_DIR}/bit_read_fuzz.cpp)
