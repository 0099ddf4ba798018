# Two commands on a fresh machine: `make run` and `make test`.
BUILD ?= build
PREFIX ?= /usr/local
SANITIZE_BUILD ?= build-sanitize
JOBS ?= $(shell nproc 2>/dev/null || echo 2)

.PHONY: all build configure run test install test-sanitize bench bench-big fuzz fuzz-run clean

all: build

configure:
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# Only the program: the unit tests are built by `make test`.
run: configure
	@cmake --build $(BUILD) -j $(JOBS) --target qortlv
	$(BUILD)/qortlv -syntax examples/certificate.der

test: build
	cd $(BUILD) && ctest --output-on-failure

# The program, its manual page, the bash completion and the bundled data.
install: configure
	@cmake --build $(BUILD) -j $(JOBS) --target qortlv
	cmake --install $(BUILD) --prefix "$(PREFIX)"

test-sanitize:
	@cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DQORTLV_SANITIZE=ON >/dev/null
	@cmake --build $(SANITIZE_BUILD) -j $(JOBS)
	cd $(SANITIZE_BUILD) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure

fuzz:
	@cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ -DQORTLV_FUZZ=ON -DQORTLV_TESTS=OFF >/dev/null
	@cmake --build build-fuzz -j $(JOBS)

fuzz-run: fuzz
	fuzz/run.sh

bench: build
	bench/run.sh

# Files of 2, 4 and 5 GiB (about 11 GiB of disk): not part of CI.
bench-big: build
	bench/big.sh

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD) build-fuzz
