# The two first commands of the README: `make demo` and `make test`.
MAKEFLAGS += --no-print-directory
BUILD ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?=
ifdef CI
CMAKE_FLAGS += -DCORVANET_WERROR=ON
endif

.PHONY: deps build test demo package screenshots bench fuzz mutants format clean windows \
	windows-test windows-package windows-e2e

deps:
	@bash scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

test: build
	@cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

demo: build
	@bash scripts/demo.sh $(BUILD)

# $(BUILD)/corvanet_<version>_<arch>.deb, with the tests left out of the build.
package: deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS) --target corvanet corvanet-cli corvanet-demo-service PxFiles complete
	@cd $(BUILD) && cpack -G DEB >/dev/null && ls corvanet_*.deb

# The Windows programs and test suites, cross-built with mingw-w64 into $(WINDOWS_BUILD)/bin.
WINDOWS_BUILD ?= build-windows
WINDOWS_PROGRAMS ?= corvanet-cli PxFiles complete corvanet-demo-service
WINDOWS_TARGETS ?= $(WINDOWS_PROGRAMS) core_tests cli_tests tools_tests
define windows_build
	@bash scripts/install-deps.sh windows
	@cmake -S . -B $(WINDOWS_BUILD) -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake \
	  -DCMAKE_BUILD_TYPE=Release $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(WINDOWS_BUILD) -j $(JOBS) --target $(1)
endef
windows:
	$(call windows_build,$(WINDOWS_TARGETS))

# $(WINDOWS_BUILD)/corvanet-<version>-windows-x64.exe (an NSIS installer) and .zip of the same
# files; only the programs are built for it (the demo service too, which the end-to-end check runs).
windows-package:
	$(call windows_build,$(WINDOWS_PROGRAMS))
	@cd $(WINDOWS_BUILD) && cpack -G "NSIS;ZIP" >/dev/null && ls corvanet-*-windows-x64.*

# The Windows suites run under Wine, in a Wine prefix of their own inside $(WINDOWS_BUILD).
windows-test: windows
	@bash scripts/windows-test.sh $(WINDOWS_BUILD)

# The installer run silently in a fresh Wine prefix and the installed program tried end to end,
# beside the Linux build doing the same steps (scripts/windows-e2e.sh says what is checked).
windows-e2e: windows-package deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j $(JOBS) --target corvanet-cli PxFiles complete \
	  corvanet-metastock-check
	@bash scripts/windows-e2e.sh $(WINDOWS_BUILD) $(BUILD)

# Pictures of every page and of runs against the demo service, in $(BUILD)/screenshots/.
screenshots: build
	@bash scripts/screenshots.sh $(BUILD)

bench: build
	@bash scripts/install-deps.sh bench
	@bash bench/run.sh $(BUILD)

# Each fuzz target for FUZZ_SECONDS (default 60).
fuzz:
	@bash scripts/fuzz.sh $(or $(FUZZ_SECONDS),60)

# Each break of scripts/mutants.txt applied to a copy of the sources in build-mutants/, its tests run,
# caught or missed printed. MUTANTS picks some: `make mutants MUTANTS="3 merge"`.
mutants: deps
	@python3 scripts/mutants.py --jobs $(JOBS) $(MUTANTS)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD) build-mutants
