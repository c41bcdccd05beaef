# Wildcard matching beside fnmatch(3); the HTML conversions beside a plain copy.
tavi_add_bench(markup ${CMAKE_CURRENT_LIST_DIR}/markup_bench.cpp)
