# Thin words over the CMake presets; each sets the machine up first.

.PHONY: demo test test-host test-windows fuzz dll bench host windows format lint setup clean

dll: windows

demo: windows
	tools/demo build/windows

# What one leaves of the processors, the others use.
test: setup
	@$(MAKE) --no-print-directory -j3 test-windows test-host lint

test-windows: windows
	ctest --preset windows

test-host: host
	ctest --preset host -j $$(nproc)
	@awk '/^Fault sweep: / { runs += $$3 } END { print "Fault sweep: " runs " runs" }' \
		build/host/Testing/Temporary/LastTest.log

# New inputs gather in the build folder; those that the tests replay are only read.
fuzz:
	@tools/setup fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz
	mkdir -p build/fuzz/corpus
	cd build/fuzz && tests/response_file_fuzz -max_total_time=60 -print_final_stats=1 corpus ../../tests/fuzz/corpus

# FILES are the sizes of the trees that are copied and deleted. Those that it has by itself take some ten minutes;
# `make bench FILES=1000` takes two.
bench: windows
	@tools/setup bench
	cmake --preset bench
	cmake --build --preset bench
	python3 bench/table.py build $(FILES)

host: setup
	cmake --preset host
	nice cmake --build --preset host

windows: setup
	cmake --preset windows
	cmake --build --preset windows

setup:
	@tools/setup

format:
	git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format -i

lint: setup
	@tools/setup lint
	cmake --preset lint
	nice cmake --build --preset lint

clean:
	rm -rf build
