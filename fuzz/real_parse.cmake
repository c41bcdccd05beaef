tavi_add_fuzzer(real_parse ${CMAKE_CURRENT_LIST_DIR}/real_parse_fuzz.cpp)
