# Two commands on a fresh machine: `make run` and `make test`.
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all build run test test-sanitize bench clean

all: build

build:
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

run: build
	./$(BUILD)/qortlv -syntax examples/certificate.der

test: build
	cd $(BUILD) && ctest --output-on-failure

test-sanitize:
	@cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DQORTLV_SANITIZE=ON >/dev/null
	@cmake --build $(SANITIZE_BUILD) -j $(JOBS)
	cd $(SANITIZE_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure

bench: build
	bench/run.sh

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD)
