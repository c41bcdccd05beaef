tavi_add_fuzzer(aes_stream ${CMAKE_CURRENT_LIST_DIR}/aes_stream_fuzz.cpp)
