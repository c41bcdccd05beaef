tavi_add_fuzzer(xor_filter ${CMAKE_CURRENT_LIST_DIR}/xor_filter_fuzz.cpp)
