tavi_add_fuzzer(date_text_parse ${CMAKE_CURRENT_LIST_DIR}/date_text_parse_fuzz.cpp)
