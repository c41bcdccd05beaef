tavi_add_fuzzer(collection_read ${CMAKE_CURRENT_LIST_DIR}/collection_read_fuzz.cpp)
