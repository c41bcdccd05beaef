tavi_add_fuzzer(xpack_unpack ${CMAKE_CURRENT_LIST_DIR}/xpack_unpack_fuzz.cpp)
