tavi_add_fuzzer(search_text ${CMAKE_CURRENT_LIST_DIR}/search_text_fuzz.cpp)
