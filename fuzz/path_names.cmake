tavi_add_fuzzer(path_names ${CMAKE_CURRENT_LIST_DIR}/path_names_fuzz.cpp)
