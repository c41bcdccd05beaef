# Doubles to text and back beside snprintf, strtod and std::to_chars/from_chars.
tavi_add_bench(double ${CMAKE_CURRENT_LIST_DIR}/double_bench.cpp)
