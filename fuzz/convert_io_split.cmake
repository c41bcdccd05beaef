tavi_add_fuzzer(convert_io_split ${CMAKE_CURRENT_LIST_DIR}/convert_io_split_fuzz.cpp)
