tavi_add_fuzzer(money_parse ${CMAKE_CURRENT_LIST_DIR}/money_parse_fuzz.cpp)
