tavi_add_fuzzer(double_round_trip ${CMAKE_CURRENT_LIST_DIR}/double_round_trip_fuzz.cpp)
