tavi_add_bench(money ${CMAKE_CURRENT_LIST_DIR}/money_bench.cpp)
