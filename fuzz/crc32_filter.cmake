tavi_add_fuzzer(crc32_filter ${CMAKE_CURRENT_LIST_DIR}/crc32_filter_fuzz.cpp)
