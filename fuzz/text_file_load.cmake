tavi_add_fuzzer(text_file_load ${CMAKE_CURRENT_LIST_DIR}/text_file_load_fuzz.cpp)
