tavi_add_fuzzer(collection_search ${CMAKE_CURRENT_LIST_DIR}/collection_search_fuzz.cpp)
