tavi_add_fuzzer(convert_lines ${CMAKE_CURRENT_LIST_DIR}/convert_lines_fuzz.cpp)
