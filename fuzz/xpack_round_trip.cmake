tavi_add_fuzzer(xpack_round_trip ${CMAKE_CURRENT_LIST_DIR}/xpack_round_trip_fuzz.cpp)
