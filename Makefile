# Front door of the build. Every target installs what is missing first.
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_GEN := -G Ninja
# A machine with ccache keeps compiled objects between clean builds; CI has none and builds as usual.
CCACHE := $(shell command -v ccache 2>/dev/null)
ifneq ($(CCACHE),)
CMAKE_GEN += -DCMAKE_CXX_COMPILER_LAUNCHER=$(CCACHE)
endif
# Tests and tools asked for outright, so that a missing package stops the build instead of skipping them.
DEV_OPTS := -DORVANE_BUILD_TESTS=ON -DORVANE_BUILD_TOOLS=ON -DORVANE_BUILD_BENCH=OFF

.PHONY: all deps test demo bench sanitize fuzz format clean

all: test

deps:
	@scripts/install-deps

test: deps
	cmake -S . -B build $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVANE_WERROR=ON $(DEV_OPTS)
	cmake --build build -j $(JOBS)
	ctest --test-dir build --output-on-failure --no-tests=error -j $(JOBS)

demo: deps
	cmake -S . -B build $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVANE_WERROR=ON $(DEV_OPTS)
	cmake --build build -j $(JOBS) --target orvane_tool
	build/tools/orvane check examples/sparrow_swim.json --svg build/demo.svg
	@echo
	build/tools/orvane profile examples/laser4diy_shim.dxf --arc-tol 0.01 --dxf build/demo-profile.dxf --svg build/demo-profile.svg

bench: deps
	cmake -S . -B build-bench $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release -DORVANE_BUILD_TESTS=OFF -DORVANE_BUILD_TOOLS=ON -DORVANE_BUILD_BENCH=ON
	cmake --build build-bench -j $(JOBS)
	@set -e; for b in build-bench/bench/bench_*; do echo "== $$b"; "$$b" $(BENCH_ARGS); done

sanitize: deps
	cmake -S . -B build-sanitize $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DORVANE_WERROR=ON -DORVANE_SANITIZE=ON $(DEV_OPTS)
	cmake --build build-sanitize -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir build-sanitize --output-on-failure -j $(JOBS)

# FUZZ_SECONDS bounds the run; findings land in build-fuzz/findings.
FUZZ_SECONDS ?= 60
fuzz: deps
	CXX=clang++-14 cmake -S . -B build-fuzz $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVANE_FUZZ=ON \
	  -DORVANE_BUILD_TESTS=OFF -DORVANE_BUILD_BENCH=OFF
	cmake --build build-fuzz -j $(JOBS) --target fuzz_layout fuzz_xml fuzz_binary fuzz_json fuzz_dxf fuzz_profile
	mkdir -p build-fuzz/corpus build-fuzz/findings
	build-fuzz/fuzz/fuzz_layout build-fuzz/corpus fuzz/seeds -max_total_time=$(FUZZ_SECONDS) -timeout=10 \
	  -rss_limit_mb=4096 -max_len=65536 -artifact_prefix=build-fuzz/findings/ -print_final_stats=1
	@set -e; for t in xml binary json dxf; do \
	  mkdir -p build-fuzz/corpus-$$t; \
	  build-fuzz/fuzz/fuzz_$$t build-fuzz/corpus-$$t fuzz/seeds-$$t -max_total_time=$(FUZZ_SECONDS) -timeout=10 \
	    -rss_limit_mb=4096 -max_len=65536 -artifact_prefix=build-fuzz/findings/$$t- -print_final_stats=1; \
	done
	mkdir -p build-fuzz/corpus-profile
	build-fuzz/fuzz/fuzz_profile build-fuzz/corpus-profile fuzz/seeds-dxf -max_total_time=$(FUZZ_SECONDS) -timeout=10 \
	  -rss_limit_mb=4096 -max_len=65536 -artifact_prefix=build-fuzz/findings/profile- -print_final_stats=1

format:
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build build-bench build-sanitize build-fuzz
