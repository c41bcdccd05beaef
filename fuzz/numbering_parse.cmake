tavi_add_fuzzer(numbering_parse ${CMAKE_CURRENT_LIST_DIR}/numbering_parse_fuzz.cpp)
