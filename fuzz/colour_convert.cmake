tavi_add_fuzzer(colour_convert ${CMAKE_CURRENT_LIST_DIR}/colour_convert_fuzz.cpp)
