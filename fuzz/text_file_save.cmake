tavi_add_fuzzer(text_file_save ${CMAKE_CURRENT_LIST_DIR}/text_file_save_fuzz.cpp)
