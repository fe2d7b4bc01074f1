# A thin front: the bootstrap script installs what is missing, CMake's presets do the work.
.DEFAULT_GOAL := build
.PHONY: build run test screenshots texts bench bench-culprit bench-window soak core asan tsan check-mac fuzz package test-package format format-check tidy clean

sources := $(shell git ls-files --cached --others --exclude-standard -- 'Packaging/*.cpp' 'Sources/*.h' 'Sources/*.cpp' 'Sources/*.mm' 'Tests/*.h' \
	'Tests/*.cpp' 'Benchmarks/*.h' 'Benchmarks/*.cpp' 'Fuzz/*.cpp' 2>/dev/null)

CATALOGUE := build/texts/vantoro.ts

# configure-and-build PRESET: configures once (CMake itself configures again when its files change), then builds.
define configure-and-build
	@test -f build/$(1)/build.ninja || cmake --preset $(1)
	@cmake --build --preset $(1)
endef

build:
	@Scripts/bootstrap build
	$(call configure-and-build,release)

run: build
	@Scripts/run

test:
	@Scripts/bootstrap test
	$(call configure-and-build,dev)
	@ctest --preset dev

# Every screen of the interface, from recordings, without a screen.
screenshots:
	@Scripts/bootstrap test
	$(call configure-and-build,dev)
	@build/dev/bin/vantoro-screenshots Documentation/screenshots

# Every text of the views, for a translator: lrelease makes vantoro_de.qm of it, for share/vantoro/i18n. What a
# catalogue of that name already holds stays.
texts:
	@Scripts/bootstrap texts
	@mkdir -p build/texts $(dir $(CATALOGUE))
	@PATH="$$PATH:/usr/lib/qt6/bin" lupdate -silent -locations none -no-obsolete Sources/Vantoro/Views \
		-ts $(CATALOGUE) 2>build/texts/complaints || { cat build/texts/complaints >&2; exit 1; }

asan tsan core:
	@Scripts/bootstrap ci
	$(call configure-and-build,$@)
	@ctest --preset $@

# Compiles and links what needs no Qt for the Mac, on Linux; nothing of it is run.
check-mac:
	@Scripts/bootstrap mac
	$(call configure-and-build,check-mac)

# What people install: a .deb and an archive that runs from any folder, in build/release/packages.
package:
	@Scripts/bootstrap package
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target vantoro-packages
	@ls -1 build/release/packages/*

# Installs them into an empty root and into a folder, and runs them from there.
test-package: package
	@Tests/Packaging/install-packages

fuzz:
	@Scripts/bootstrap ci
	$(call configure-and-build,fuzz)
	@Scripts/fuzz

bench:
	@Scripts/bootstrap bench
	$(call configure-and-build,bench)
	@Benchmarks/run

# How often Vantoro names who heats a machine: on made machines, whose culprit is known, and beside real loads on this
# one. ARGS="--seeds 10" is quicker, ARGS="--first-seed 1000" takes other machines.
bench-culprit:
	@Scripts/bootstrap bench
	$(call configure-and-build,bench)
	@build/bench/bin/vantoro_culprit --tier 1 $(ARGS)
	@build/bench/bin/vantoro_culprit --tier 2 --vantoro build/bench/bin/vantoro

format:
	@clang-format -i $(sources)

format-check:
	@clang-format --dry-run -Werror $(sources)

# The model's own files: what decides and words; the rest is covered by the compilers' warnings and the sanitizers.
tidy:
	@cmake --preset tidy >/dev/null
	@printf '%s\n' Sources/Vantoro/Model/*/*.cpp | xargs -P $(shell nproc 2>/dev/null || sysctl -n hw.ncpu) -n 1 \
		clang-tidy --quiet -p build/tidy

# What the window costs, on a screen of its own.
bench-window:
	@Scripts/bootstrap bench
	$(call configure-and-build,bench)
	@Benchmarks/window

# An hour with the process stream killed, stopped and started anew: nothing may grow. SOAK_SECONDS shortens it.
soak:
	@Scripts/bootstrap bench
	$(call configure-and-build,release)
	@Benchmarks/soak

clean:
	@rm -rf build
