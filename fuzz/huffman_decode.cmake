tavi_add_fuzzer(huffman_decode ${CMAKE_CURRENT_LIST_DIR}/huffman_decode_fuzz.cpp)
