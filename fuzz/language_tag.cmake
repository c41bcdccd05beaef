tavi_add_fuzzer(language_tag ${CMAKE_CURRENT_LIST_DIR}/language_tag_fuzz.cpp)
