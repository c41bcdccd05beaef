tavi_add_bench(core ${CMAKE_CURRENT_LIST_DIR}/core_bench.cpp)
