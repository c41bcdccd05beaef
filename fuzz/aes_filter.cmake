tavi_add_fuzzer(aes_filter ${CMAKE_CURRENT_LIST_DIR}/aes_filter_fuzz.cpp)
