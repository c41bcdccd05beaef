tavi_add_fuzzer(pack_number_read ${CMAKE_CURRENT_LIST_DIR}/pack_number_read_fuzz.cpp)
