tavi_add_fuzzer(sized_read ${CMAKE_CURRENT_LIST_DIR}/sized_read_fuzz.cpp)
