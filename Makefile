# The two everyday commands: `make run` and `make test`. Both install what is missing first.
BUILD ?= build
JOBS ?= $(shell nproc)

FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 600
FUZZ_JOBS ?= 2

.PHONY: deps configure build run test bench fuzz clean

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
	rm -rf $(BUILD) $(FUZZ_BUILD)
