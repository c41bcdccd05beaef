# Text conversion filter, searches and case mapping beside the plain converter,
# std::u16string_view::find, memmem and ICU.
tavi_add_bench(text ${CMAKE_CURRENT_LIST_DIR}/text_bench.cpp)
target_link_libraries(bench_text PRIVATE ICU::uc)
