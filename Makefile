# The commands a newcomer needs. Each installs what is missing by itself.
JOBS ?= $(shell nproc)
SCENE ?= examples/horse.toml

.PHONY: all build demo test bench asan tsan fuzz docs check compare-blender windows-check clean deps

all: build

deps:
	@tools/install_deps.sh

build: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS)

demo: build
	@mkdir -p out
	@build/release/bin/velmar render $(SCENE) -o out/$(basename $(notdir $(SCENE))).png
	@echo out/$(basename $(notdir $(SCENE))).png

test: build check
	@ctest --preset release -j $(JOBS)

check:
	@python3 tools/check_includes.py
	@python3 tools/check_tour.py

# Compares pictures with those of Blender's Cycles; says so and goes on where Blender is not installed.
compare-blender: build
	@python3 tests/blender/compare.py || [ $$? -eq 77 ]

# Compiles the diagnostics' Windows part, which no other target does.
windows-check:
	@tools/install_deps.sh ninja-build cmake g++-mingw-w64-x86-64-posix
	@cmake -S DebugTools -B build/windows -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=$(CURDIR)/cmake/mingw.cmake >/dev/null
	@cmake --build build/windows -j $(JOBS)

bench: build
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench -j $(JOBS)
	@python3 bench/run.py

asan tsan: deps
	@cmake --preset $@ >/dev/null
	@cmake --build --preset $@ -j $(JOBS)
	@ctest --preset $@ -j $(JOBS)

# RUNS and TARGETS choose how much and what.
fuzz: deps
	@command -v clang++-14 >/dev/null || tools/install_deps.sh clang-14 libclang-rt-14-dev
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)
	@fuzz/run.sh $(or $(RUNS),2000000) $(TARGETS)

docs: build
	@tools/make_docs.sh

clean:
	rm -rf build out
