# The two everyday commands: `make run` and `make test`. Both install what is missing first.
BUILD ?= build
JOBS ?= $(shell nproc)

FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 600
FUZZ_JOBS ?= 2

SAN_BUILD ?= build-sanitize
# Frame pointers keep the reported stacks whole. Without -fno-sanitize-recover, undefined
# behaviour is printed and the program carries on, so the test would still pass.
SAN_FLAGS = -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -g
# Status 86 is never the program's own, so a test that expects a failure status (--info's 1
# and 2) cannot take a sanitizer abort for the answer it wanted.
# Leaks are checked too; what third-party libraries still hold at exit is listed in
# scripts/lsan.supp.
SAN_ENV = ASAN_OPTIONS=halt_on_error=1:exitcode=86:detect_leaks=1 \
	LSAN_OPTIONS=suppressions=$(CURDIR)/scripts/lsan.supp \
	UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1:exitcode=86

.PHONY: deps configure build run test sanitize bench fuzz clean

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/app/marigold resources/sample.jpg

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS) --timeout 300

# The whole suite built with AddressSanitizer and UndefinedBehaviorSanitizer: any report fails
# the test that caused it. The options are exported to the build too, because the build runs
# the test binary to list its cases.
sanitize: deps
	@cmake -S . -B $(SAN_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=g++-12 \
		-DCMAKE_CXX_FLAGS="$(SAN_FLAGS)" -DCMAKE_EXE_LINKER_FLAGS="$(SAN_FLAGS)" \
		-DCMAKE_SHARED_LINKER_FLAGS="$(SAN_FLAGS)" >/dev/null
	@$(SAN_ENV) cmake --build $(SAN_BUILD) -j $(JOBS)
	cd $(SAN_BUILD) && $(SAN_ENV) QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS) --timeout 300

bench: build
	$(BUILD)/bench/marigold_bench --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
		--benchmark_enable_random_interleaving=true
	bench/export_vs_imagemagick.sh $(BUILD)/app/marigold

# Every parser of untrusted JPEG and EXIF bytes under libFuzzer with AddressSanitizer and
# UndefinedBehaviorSanitizer, FUZZ_SECONDS each.
fuzz:
	@scripts/install-deps fuzz
	@cmake -S fuzz -B $(FUZZ_BUILD) -G Ninja -DCMAKE_CXX_COMPILER=clang++ >/dev/null
	@cmake --build $(FUZZ_BUILD) -j $(JOBS)
	fuzz/run.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_JOBS)

clean:
	rm -rf $(BUILD) $(FUZZ_BUILD) $(SAN_BUILD)
