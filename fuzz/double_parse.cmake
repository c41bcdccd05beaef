tavi_add_fuzzer(double_parse ${CMAKE_CURRENT_LIST_DIR}/double_parse_fuzz.cpp)
