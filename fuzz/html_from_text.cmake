tavi_add_fuzzer(html_from_text ${CMAKE_CURRENT_LIST_DIR}/html_from_text_fuzz.cpp)
