# Front door: `make demo` and `make test` on a fresh Debian machine.
SHELL := /bin/bash
JOBS ?= $(shell nproc)
PREFIX ?= /usr/local
BUILD ?= build

SANITIZER_ENV := ASAN_OPTIONS=halt_on_error=1:detect_leaks=1:abort_on_error=1 \
	UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 \
	TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=$(CURDIR)/tests/tsan.supp

.PHONY: all deps build test ui-test ci ci-release ci-ui ci-asan ci-tsan ci-fuzz dap-test fuzz fuzz-build bench install package demo format format-check tidy clean

all: build

deps:
	@bash scripts/install-deps.sh

$(BUILD)/release/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD)/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON

build: deps $(BUILD)/release/CMakeCache.txt
	cmake --build $(BUILD)/release -j $(JOBS)

test: build
	cd $(BUILD)/release && ctest --output-on-failure -j $(JOBS)

# The inspector page in headless Chromium against the release build's nox-demo;
# screenshots in $(BUILD)/release/ui-artifacts.
ui-test: build
	bash tests/ui/run.sh $(BUILD)/release

# CI: the format check (cheapest first), the release build's tests, the inspector page
# in a browser, nox-dap driven by a real protocol client, the same tests built with ASan
# and UBSan, the threaded tests built with TSan, then a short fuzzing pass. The ASan
# build is the static one (BUILD_SHARED_LIBS=OFF): the whole suite and the
# installed-package consumers then cover the static library too, without a compile of
# their own.
ci: deps format-check ci-release ci-ui dap-test ci-asan ci-tsan ci-fuzz

# The benchmarks are compiled (not run) so that they keep building with the library.
ci-release:
	cmake -S . -B $(BUILD)/ci-release -G Ninja -DCMAKE_BUILD_TYPE=Release -DNOX_UTILS_BUILD_BENCH=ON
	cmake --build $(BUILD)/ci-release -j $(JOBS)
	cd $(BUILD)/ci-release && ctest --output-on-failure -j $(JOBS)

ci-ui: ci-release
	bash tests/ui/run.sh $(BUILD)/ci-release

ci-asan:
	cmake -S . -B $(BUILD)/ci-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-O1 \
		-DNOX_UTILS_SANITIZE=address,undefined -DNOX_UTILS_BUILD_BENCH=OFF -DBUILD_SHARED_LIBS=OFF
	cmake --build $(BUILD)/ci-asan -j $(JOBS)
	cd $(BUILD)/ci-asan && $(SANITIZER_ENV) ctest --output-on-failure -j $(JOBS)

# nox-dap end to end: a Debug Adapter Protocol client (tests/dap, node's test runner)
# drives nox-dap against a real nox-demo on a free loopback port. The protocol
# transcript of the whole session test is left in the build directory.
DAP_BUILD ?= $(BUILD)/ci-release

dap-test: deps
	@[ -f $(DAP_BUILD)/CMakeCache.txt ] || cmake -S . -B $(DAP_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release \
		-DNOX_UTILS_BUILD_BENCH=OFF
	cmake --build $(DAP_BUILD) -j $(JOBS) --target nox-dap nox-demo
	cd tests/dap && NOX_DAP=$(abspath $(DAP_BUILD))/apps/dap/nox-dap NOX_DEMO=$(abspath $(DAP_BUILD))/apps/demo/nox-demo \
		NOX_DAP_TRANSCRIPT=$(abspath $(DAP_BUILD))/dap-transcript.log timeout 600 node --test

# Suites whose tests run several threads against each other.
THREADED_TESTS := ^(Threading|FrameworkMutex|DebuggerThreaded|HttpServer|HttpOptions|HttpRobustness|HttpRequestHandler|Inspection)

ci-tsan:
	cmake -S . -B $(BUILD)/ci-tsan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-O1 \
		-DNOX_UTILS_SANITIZE=thread -DNOX_UTILS_BUILD_BENCH=OFF -DNOX_UTILS_BUILD_APPS=OFF
	cmake --build $(BUILD)/ci-tsan -j $(JOBS) --target nox_utils_tests
	cd $(BUILD)/ci-tsan && $(SANITIZER_ENV) ctest --output-on-failure -j $(JOBS) -R '$(THREADED_TESTS)'

# Fuzzing: the library and the libFuzzer programs of tests/fuzz, built with clang, ASan
# and UBSan. `make fuzz` runs each target for FUZZ_SECONDS; new failing inputs land in
# tests/fuzz/regressions/<target>, which every normal build replays.
FUZZ_SECONDS ?= 60
CI_FUZZ_SECONDS ?= 20

fuzz-build: deps
	cmake -S . -B $(BUILD)/fuzz -G Ninja -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
		-DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_SHARED_LIBS=OFF -DNOX_UTILS_FUZZ=ON
	cmake --build $(BUILD)/fuzz -j $(JOBS)

fuzz: fuzz-build
	bash scripts/fuzz.sh $(BUILD)/fuzz $(FUZZ_SECONDS)

ci-fuzz: fuzz-build
	bash scripts/fuzz.sh $(BUILD)/fuzz $(CI_FUZZ_SECONDS)

bench: deps
	cmake -S . -B $(BUILD)/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DNOX_UTILS_BUILD_BENCH=ON \
		-DNOX_UTILS_BUILD_TESTS=OFF
	cmake --build $(BUILD)/bench -j $(JOBS)
	$(BUILD)/bench/bench/nox_utils_bench
	bash bench/http_load.sh $(BUILD)/bench

install: build
	cmake --install $(BUILD)/release --prefix $(PREFIX)

# The .deb files of the release build: runtime library, development files, tools.
package: build
	cd $(BUILD)/release && cpack -B $(CURDIR)/$(BUILD)/packages
	@ls -1 $(BUILD)/packages/*.deb

# Formatting and static checks of the C++ sources the project owns.
CLANG_FORMAT ?= clang-format-14
RUN_CLANG_TIDY ?= run-clang-tidy-14
SOURCE_DIRS := nox apps tests bench examples
SOURCES = $(shell find $(SOURCE_DIRS) -name '*.h' -o -name '*.cpp')

format:
	@$(CLANG_FORMAT) -i $(SOURCES)

format-check:
	@echo "$(CLANG_FORMAT): checking $(words $(SOURCES)) files"
	@$(CLANG_FORMAT) --dry-run --Werror $(SOURCES)

# clang-tidy over the compile database of the release build (.clang-tidy holds the checks).
tidy: deps
	cmake -S . -B $(BUILD)/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
	cmake --build $(BUILD)/release -j $(JOBS)
	$(RUN_CLANG_TIDY) -p $(BUILD)/release -j $(JOBS) -quiet '$(CURDIR)/($(subst $() $(),|,$(SOURCE_DIRS)))/.*\.cpp$$'

demo: deps build
	$(BUILD)/release/apps/demo/nox-demo

clean:
	rm -rf $(BUILD)
