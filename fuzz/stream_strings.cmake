tavi_add_fuzzer(stream_strings ${CMAKE_CURRENT_LIST_DIR}/stream_strings_fuzz.cpp)
