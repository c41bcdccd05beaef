# A language file of a million lines, beside a std::map parse of the same text.
tavi_add_bench(resource ${CMAKE_CURRENT_LIST_DIR}/resource_bench.cpp)
