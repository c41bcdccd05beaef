tavi_add_fuzzer(colour_parse ${CMAKE_CURRENT_LIST_DIR}/colour_parse_fuzz.cpp)
