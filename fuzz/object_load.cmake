tavi_add_fuzzer(object_load ${CMAKE_CURRENT_LIST_DIR}/object_load_fuzz.cpp)
