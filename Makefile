# Convenience targets; see README.md.
.PHONY: run test asan tsan bench fuzz clean

run:
	scripts/run.sh

test:
	scripts/test.sh

asan:
	scripts/install-deps.sh
	cmake --preset asan && cmake --build --preset asan && ctest --preset asan -j2

tsan:
	scripts/install-deps.sh
	cmake --preset tsan && cmake --build --preset tsan && ctest --preset tsan -j2

bench:
	cmake --preset release && cmake --build --preset release
	for b in build/release/bench/bench_*; do $$b; done

fuzz:
	cmake --preset fuzz && cmake --build --preset fuzz

clean:
	rm -rf build
