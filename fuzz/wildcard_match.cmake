tavi_add_fuzzer(wildcard_match ${CMAKE_CURRENT_LIST_DIR}/wildcard_match_fuzz.cpp)
