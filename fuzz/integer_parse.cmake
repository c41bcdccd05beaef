tavi_add_fuzzer(integer_parse ${CMAKE_CURRENT_LIST_DIR}/integer_parse_fuzz.cpp)
