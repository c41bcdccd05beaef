tavi_add_fuzzer(html_to_text ${CMAKE_CURRENT_LIST_DIR}/html_to_text_fuzz.cpp)
