tavi_add_bench(date_text ${CMAKE_CURRENT_LIST_DIR}/date_text_bench.cpp)
