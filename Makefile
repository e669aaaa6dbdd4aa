# A thin front: the CMake presets and the scripts do the work.
PREFIX ?= /usr/local
DESTDIR ?=

.PHONY: build tools demo test sanitize bench install format lint setup setup-checks

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
