tavi_add_fuzzer(lz_round_trip ${CMAKE_CURRENT_LIST_DIR}/lz_round_trip_fuzz.cpp)
