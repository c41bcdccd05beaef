tavi_add_fuzzer(date_text_pattern ${CMAKE_CURRENT_LIST_DIR}/date_text_pattern_fuzz.cpp)
