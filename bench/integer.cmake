tavi_add_bench(integer ${CMAKE_CURRENT_LIST_DIR}/integer_bench.cpp)
