# Colour conversions of a block of colour values, beside the textbook per-channel power path.
tavi_add_bench(colour ${CMAKE_CURRENT_LIST_DIR}/colour_bench.cpp)
