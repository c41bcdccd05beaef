tavi_add_fuzzer(language_file ${CMAKE_CURRENT_LIST_DIR}/language_file_fuzz.cpp)
