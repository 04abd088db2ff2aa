# The two everyday commands: `make run` and `make test`. Both install what is missing first.
BUILD ?= build
JOBS ?= $(shell nproc)

.PHONY: deps configure build run test bench clean

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

clean:
	rm -rf $(BUILD)
