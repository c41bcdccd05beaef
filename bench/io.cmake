tavi_add_bench(io io_bench.cpp)
