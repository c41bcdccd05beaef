tavi_add_fuzzer(calendar_fields ${CMAKE_CURRENT_LIST_DIR}/calendar_fields_fuzz.cpp)
