tavi_add_fuzzer(lz_decode ${CMAKE_CURRENT_LIST_DIR}/lz_decode_fuzz.cpp)
