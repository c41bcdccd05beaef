tavi_add_fuzzer(real_round_trip ${CMAKE_CURRENT_LIST_DIR}/real_round_trip_fuzz.cpp)
