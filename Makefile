# Thin words over the CMake presets; each sets the machine up first.

.PHONY: demo test fuzz dll bench host windows format lint setup clean

dll: windows

demo: windows
	tools/demo build/windows

test: host windows
	ctest --preset host
	ctest --preset windows

# New inputs gather in the build folder; those that the tests replay are only read.
fuzz:
	@tools/setup fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz
	mkdir -p build/fuzz/corpus
	cd build/fuzz && tests/response_file_fuzz -max_total_time=60 -print_final_stats=1 corpus ../../tests/fuzz/corpus

bench: windows
	cmake --build --preset windows --target bench

host windows: setup
	cmake --preset $@
	cmake --build --preset $@

setup:
	@tools/setup

format:
	git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format -i

# clang-tidy reads how the host build compiles each file of the library.
lint: host
	tools/setup lint
	git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format --dry-run -Werror
	git ls-files 'install/*.cpp' | grep -v -e dll_main -e c_file -e own_module -e platform/exceptions | xargs -P2 -n4 clang-tidy -p build/host --quiet

clean:
	rm -rf build
