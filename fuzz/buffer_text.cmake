tavi_add_fuzzer(buffer_text ${CMAKE_CURRENT_LIST_DIR}/buffer_text_fuzz.cpp)
