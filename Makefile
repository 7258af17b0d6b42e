# Thin words over the CMake presets; each sets the machine up first.

.PHONY: demo test dll bench host windows format lint setup clean

dll: windows

demo: windows
	tools/demo build/windows

test: host windows
	ctest --preset host
	ctest --preset windows

bench: windows
	cmake --build --preset windows --target bench

host windows: setup
	cmake --preset $@
	cmake --build --preset $@

setup:
	@tools/setup

format:
	git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format -i

lint:
	git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format --dry-run -Werror

clean:
	rm -rf build
