# The two commands: `make demo` and `make test`. Both install what is missing.
JAVA_HOME ?= /usr/lib/jvm/java-17-openjdk-amd64
export JAVA_HOME
JOBS ?= $(shell nproc)
# -noreset: otherwise the server resets whenever its last client leaves and
# refuses the connections of parallel tests that arrive meanwhile.
XVFB := xvfb-run -a -s "-screen 0 1280x1024x24 -noreset"

.PHONY: all deps build install demo test test-default test-asan test-tsan test-arm bench format clean

all: build

deps:
	@scripts/install-deps.sh base

build: deps
	cmake --preset default >/dev/null
	cmake --build --preset default -j $(JOBS)

# The library, public headers, CMake package, pkg-config module and jars.
PREFIX ?= /usr/local
install: build
	cmake --install build --prefix $(PREFIX)

demo: build
	$(XVFB) scripts/demo.sh build demo-out

test: test-default test-asan test-tsan test-arm
	@echo "All test builds passed."

test-default: build
	cd build && $(XVFB) ctest --output-on-failure -j $(JOBS)

# The Java tests run here too; tests/CMakeLists.txt gives them the sanitizer
# runtimes and options the JVM needs.
test-asan: deps
	cmake --preset asan >/dev/null
	cmake --build --preset asan -j $(JOBS)
	cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  $(XVFB) ctest --output-on-failure -j $(JOBS)

# Only the tests labelled "tsan" are built in this configuration.
test-tsan: deps
	cmake --preset tsan >/dev/null
	cmake --build --preset tsan -j $(JOBS)
	cd build-tsan && TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
	  $(XVFB) ctest --output-on-failure -j $(JOBS) -L tsan

# 32-bit ARM (ARMv7-A + NEON): cross-built, tests run under qemu-user. Tests
# that need a GL context or a JVM are not built there (README, "32-bit ARM");
# a GoogleTest skip shows as a ctest skip instead of a pass.
test-arm:
	@scripts/install-deps.sh arm
	cmake --preset armhf >/dev/null
	cmake --build --preset armhf -j $(JOBS)
	cd build-armhf && ctest --output-on-failure --no-tests=error -j $(JOBS)

bench:
	@scripts/install-deps.sh bench
	cmake --preset bench >/dev/null
	cmake --build --preset bench -j $(JOBS)
	$(XVFB) scripts/bench.sh build-bench

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build build-asan build-tsan build-bench build-armhf build-armhf-sysroot demo-out

# libFuzzer targets (clang, build-fuzz/): each runs FUZZ_SECONDS, one at a time.
FUZZ_SECONDS ?= 60
.PHONY: fuzz
fuzz:
	@scripts/install-deps.sh fuzz
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz --target ov_fuzzers -j $(JOBS)
	scripts/fuzz.sh build-fuzz $(FUZZ_SECONDS) $(FUZZ_TARGETS)
.PHONY: clean-fuzz
clean: clean-fuzz
clean-fuzz:
	rm -rf build-fuzz
