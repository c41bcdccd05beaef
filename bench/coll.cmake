tavi_add_bench(coll ${CMAKE_CURRENT_LIST_DIR}/coll_bench.cpp)
