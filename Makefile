# Thin words over the CMake presets; each sets the machine up first.

.PHONY: demo test test-host test-windows fuzz dll bench host windows format lint setup clean

dll: windows

demo: windows
	tools/demo build/windows

# Installations mostly wait, which leaves time for the rest. What each of the two says is shown at its end.
test: host windows
	@$(MAKE) --no-print-directory -j2 --output-sync=target test-windows test-host

test-windows:
	ctest --preset windows

test-host:
	nice ctest --preset host
	@grep -h '^Fault sweep: ' build/host/Testing/Temporary/LastTest.log
	@nice $(MAKE) --no-print-directory lint

# New inputs gather in the build folder; those that the tests replay are only read.
fuzz:
	@tools/setup fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz
	mkdir -p build/fuzz/corpus
	cd build/fuzz && tests/response_file_fuzz -max_total_time=60 -print_final_stats=1 corpus ../../tests/fuzz/corpus

# FILES are the sizes of the trees that are copied and deleted. Those that it has by itself take a quarter of an hour;
# `make bench FILES=1000` takes three minutes.
bench: windows
	@tools/setup bench
	cmake --preset bench
	cmake --build --preset bench
	python3 bench/table.py build $(FILES)

host windows: setup
	cmake --preset $@
	cmake --build --preset $@

setup:
	@tools/setup

format:
	git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format -i

# The analysers read how CMake compiles each file: without sanitizers, whose options Clang does not all know. Two files
# are for Windows only. cppcheck sees everything as the host compiles it, and what Windows runs as Windows does too.
tidy := clang-tidy --quiet --extra-arg=-fno-caret-diagnostics
windows_only := install/pc/winnt/msi/platform/own_module.cpp install/pc/winnt/msi/zqviwicn/dll_main.cpp
cppcheck := cppcheck --quiet --error-exitcode=1 --std=c++20 --enable=warning,performance,portability,style \
            --suppressions-list=tools/cppcheck-suppressions.txt -j2
lint: setup
	@tools/setup lint
	cmake --preset host -B build/lint -DZQV_SANITIZE=OFF >/dev/null
	git ls-files '*.h' '*.cpp' '*.inc' | xargs clang-format --dry-run -Werror
	git ls-files '*.py' | PYTHONPYCACHEPREFIX=build/lint/python xargs python3 -m py_compile
	$(cppcheck) --project=build/lint/compile_commands.json --library=googletest
	$(cppcheck) --platform=win32A -D_WIN32 --library=windows,googletest -Iinstall/pc/winnt/msi \
		-Ibuild/lint/install/pc/winnt/msi install bench tests/engine
	$(tidy) $(windows_only) -- --target=i686-w64-mingw32 -std=c++20 -Iinstall/pc/winnt/msi
	git ls-files 'install/*.cpp' $(windows_only:%=':!%') | xargs -P2 -n1 $(tidy) -p build/lint

clean:
	rm -rf build
