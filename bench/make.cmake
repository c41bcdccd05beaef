tavi_add_bench(make ${CMAKE_CURRENT_LIST_DIR}/make_bench.cpp)
