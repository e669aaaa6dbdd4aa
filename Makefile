# A thin front: the CMake presets and the scripts do the work.
PREFIX ?= /usr/local
DESTDIR ?=
# What tools, install and package build: host, or cuda for the CUDA engine beside the host's.
PRESET ?= host

# Seconds that each fuzz target runs.
FUZZ_SECONDS ?= 60

.PHONY: build tools demo test python cuda sanitize tsan fuzz bench install package check-package \
        check-processors check-arm64 options format check-source lint setup setup-bench setup-checks setup-packages \
        setup-arm64

build: setup
	cmake --preset host
	cmake --build --preset host

# What a user of the program needs, without the tests.
tools: setup
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) --target tools

demo: tools
	@scripts/demo build/$(PRESET)/bin

test: python
	cmake --workflow --preset host
	scripts/python test

# The Python package, in build/python: a wheel and a source distribution.
python: setup
	scripts/python build

# The CUDA engine, the tests' CUDA build, and what of both can be checked without a device.
cuda: setup
	cmake --workflow --preset cuda

# The same tests under the address and undefined-behaviour sanitizers.
sanitize: setup
	cmake --workflow --preset host-asan

# The tests of loops, trainings and library calls that share work among threads, under the thread
# sanitizer.
tsan: setup-checks
	cmake --workflow --preset tsan

fuzz: setup-checks
	cmake --preset fuzz
	cmake --build --preset fuzz
	fuzz/run $(FUZZ_SECONDS)

# The short jobs, or with BENCH=full all of them.
bench: setup-bench
	cmake --workflow --preset bench
	bench/run $(if $(filter full,$(BENCH)),--full)

install: tools
	DESTDIR="$(DESTDIR)" cmake --install build/$(PRESET) --prefix "$(PREFIX)"

# A Debian package and a tarball, in build/packages.
package: setup-packages tools
	rm -rf build/packages
	cpack --config build/$(PRESET)/CPackConfig.cmake -B build/packages

# Both, tried in a clean root.
check-package: package
	scripts/check-package

# The tools on emulated older processors, and built for arm64.
check-processors: setup-packages tools
	scripts/check-processors

check-arm64: setup-arm64 tools
	scripts/check-arm64

# What man pages and completions say about the options, from the option table.
options: setup
	cmake --preset host
	cmake --build --preset host --target options

format: setup-checks
	scripts/format

# What takes seconds: format, layers, man pages.
check-source: setup-checks
	scripts/format --check
	scripts/check-layers
	mandoc -T lint -W warning man/*.1

lint: check-source
	scripts/lint

setup:
	@scripts/setup

setup-bench:
	@scripts/setup bench

setup-checks:
	@scripts/setup checks

setup-packages:
	@scripts/setup packages

setup-arm64:
	@scripts/setup arm64
