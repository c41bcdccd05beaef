tavi_add_fuzzer(sha256_filter ${CMAKE_CURRENT_LIST_DIR}/sha256_filter_fuzz.cpp)
