tavi_add_fuzzer(money_round_trip ${CMAKE_CURRENT_LIST_DIR}/money_round_trip_fuzz.cpp)
