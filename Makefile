# make run   - builds, creates a fresh sample project under build/ and runs the main example in it
# make test  - builds and runs every test
# Both install what is missing first (make deps).

BUILD_DIR    ?= build
SANITIZE_DIR ?= build-sanitize
FUZZ_DIR     ?= build-fuzz
JOBS         ?= 2
FUZZ_RUNS    ?= 200000
EXAMPLE      ?= Examples/FenceAssembly.lua
SAMPLE       := $(BUILD_DIR)/SampleProject
CVAI         := $(BUILD_DIR)/bin/cvai

.PHONY: all deps configure build run test test-sanitize fuzz bench ci clean

all: build

deps:
	@Tools/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@rm -rf $(SAMPLE)
	@$(CVAI) new $(SAMPLE)
	@$(CVAI) run $(EXAMPLE) --project $(SAMPLE)

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# The whole suite again, built with AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitize: deps
	@cmake -S . -B $(SANITIZE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCVAI_SANITIZE=ON -DCVAI_BENCHMARKS=OFF > /dev/null
	@cmake --build $(SANITIZE_DIR) -j $(JOBS)
	@cd $(SANITIZE_DIR) && ctest --output-on-failure -j $(JOBS)

# The request reader under libFuzzer, for a bounded number of runs.
fuzz: deps
	@CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCVAI_FUZZ=ON > /dev/null
	@cmake --build $(FUZZ_DIR) -j $(JOBS)
	@mkdir -p $(FUZZ_DIR)/corpus
	@$(FUZZ_DIR)/bin/RequestReaderFuzzer -runs=$(FUZZ_RUNS) -max_len=2048 -seed=1 -artifact_prefix=$(FUZZ_DIR)/ $(FUZZ_DIR)/corpus Fuzz/Corpus \
		|| { echo "The fuzzer found a fault: copy the crash-* input above into Fuzz/Regressions so that the tests replay it."; exit 1; }

bench: build
	@for program in $(BUILD_DIR)/bin/*Benchmark; do echo "== $$program"; $$program; done

ci: test test-sanitize fuzz

clean:
	@rm -rf $(BUILD_DIR) $(SANITIZE_DIR) $(FUZZ_DIR)
