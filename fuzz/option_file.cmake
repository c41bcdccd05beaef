tavi_add_fuzzer(option_file ${CMAKE_CURRENT_LIST_DIR}/option_file_fuzz.cpp)
