# A thin front: the CMake presets and the scripts do the work.
PREFIX ?= /usr/local
DESTDIR ?=

.PHONY: build tools demo test sanitize tsan fuzz bench install format lint setup setup-checks

# Seconds that each fuzz target runs.
FUZZ_SECONDS ?= 60

build: setup
	cmake --preset host
	cmake --build --preset host

# What a user of the program needs, without the tests.
tools: setup
	cmake --preset host
	cmake --build --preset host --target zelsvm

demo: tools
	@scripts/demo build/host/bin

test: setup
	cmake --workflow --preset host

# The same tests under the address and undefined-behaviour sanitizers.
sanitize: setup
	cmake --workflow --preset host-asan

# The tests of the loops that share work among threads, under the thread sanitizer.
tsan: setup-checks
	cmake --workflow --preset tsan

fuzz: setup-checks
	cmake --preset fuzz
	cmake --build --preset fuzz
	fuzz/run $(FUZZ_SECONDS)

bench: setup
	cmake --workflow --preset bench
	bench/run

install: tools
	DESTDIR="$(DESTDIR)" cmake --install build/host --prefix "$(PREFIX)"

format: setup-checks
	scripts/format

lint: setup-checks
	scripts/format --check
	scripts/check-layers
	scripts/check-options
	mandoc -T lint -W warning man/*.1
	scripts/lint

setup:
	@scripts/setup

setup-checks:
	@scripts/setup checks
