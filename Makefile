# Kestrine: the two commands a fresh Debian 12 machine needs are `make run` and `make test`.

BUILD_DIR  ?= build
BUILD_TYPE ?= RelWithDebInfo
JOBS       ?= $(shell nproc)
# Where `make install` puts the app; DESTDIR, when given, stages the installation in a folder.
PREFIX     ?= /usr/local

CMAKE_FLAGS := -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
ifneq ($(shell command -v ccache 2>/dev/null),)
CMAKE_FLAGS += -DCMAKE_CXX_COMPILER_LAUNCHER=ccache
endif

.PHONY: all deps configure build test test-asan run install screenshots screenshots-de bench \
        format clean check-packages translations deb

all: build

deps:
	@tools/install-deps

configure: deps
	@cmake -S . -B $(BUILD_DIR) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) --parallel $(JOBS)

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure --parallel $(JOBS)

# The whole suite (the fuzz tests aside: they run under sanitizers anyway) built with
# AddressSanitizer, UndefinedBehaviorSanitizer and LeakSanitizer in ASAN_BUILD_DIR. Any report
# fails its test: UBSan stops at the first finding, LSan checks every process at exit with only
# the third-party leaks of tests/sanitizers/lsan.supp suppressed. Its tests take about six times
# as long as those of `make test`, plus a build of their own: too long for CI beside `make test`.
# Run it before a release and after touching memory-heavy code. `make soak` runs the inbox soak
# with SOAK_LOADS loads in the same build.
ASAN_BUILD_DIR ?= $(BUILD_DIR)-asan
SOAK_LOADS     ?= 200
SANITIZER_FLAGS := -fsanitize=address,undefined -fno-sanitize-recover=undefined \
                   -fno-omit-frame-pointer
SANITIZER_ENV := UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
                 LSAN_OPTIONS=suppressions=$(abspath tests/sanitizers/lsan.supp):print_suppressions=0
# Qt's libraries keep no frame pointers: only the slow unwinder sees the frames the suppressions
# name. The soak makes too many allocations for it, and needs no suppression.
TEST_ASAN_OPTIONS := detect_leaks=1:fast_unwind_on_malloc=0:check_initialization_order=1
SOAK_ASAN_OPTIONS := detect_leaks=1:check_initialization_order=1

.PHONY: asan-build soak

asan-build: deps
	@cmake -S . -B $(ASAN_BUILD_DIR) $(CMAKE_FLAGS) -DCMAKE_CXX_FLAGS="$(SANITIZER_FLAGS)" >/dev/null
	@cmake --build $(ASAN_BUILD_DIR) --parallel $(JOBS)

test-asan: asan-build
	@cd $(ASAN_BUILD_DIR) && ASAN_OPTIONS=$(TEST_ASAN_OPTIONS) $(SANITIZER_ENV) \
	    ctest --output-on-failure --parallel $(JOBS) --label-exclude fuzz

soak: asan-build
	@cd $(ASAN_BUILD_DIR) && ASAN_OPTIONS=$(SOAK_ASAN_OPTIONS) $(SANITIZER_ENV) \
	    KESTRINE_SOAK_LOADS=$(SOAK_LOADS) KESTRINE_SOAK_SECONDS=3000 QTEST_FUNCTION_TIMEOUT=3600000 \
	    ctest --output-on-failure --verbose --timeout 3600 --tests-regex '^tst_soak$$'

# Without a display (neither DISPLAY nor WAYLAND_DISPLAY set) the app cannot open its window; the
# demo inbox is shown on the terminal instead, by kestrine-cli over the same built-in demo instance.
ifeq ($(strip $(DISPLAY)$(WAYLAND_DISPLAY)),)
run: build
	@echo "kestrine: no display (DISPLAY and WAYLAND_DISPLAY are unset), so here is the demo inbox from kestrine-cli:" >&2
	@$(BUILD_DIR)/src/cli/kestrine-cli --demo inbox
else
# The app on its built-in demo instance, which reads and writes nothing of the user's keychain,
# settings, log or caches.
run: configure
	@cmake --build $(BUILD_DIR) --parallel $(JOBS) --target kestrine
	@$(BUILD_DIR)/src/app/kestrine --demo
endif

# Every screen and state, light and dark, rendered against the demo instance into
# $(SCREENSHOT_DIR)/light and .../dark, then the same screens with texts a stranger wrote (the
# hostile-* scenes): a real X window under xvfb-run, so Material shadows show. Lists the scenes it
# wrote; fails when the tour went wrong, when the app printed a message that means something on
# screen is broken, or when the app fetched anything the stranger's texts pointed at. The screens
# speak the user's language, or SCREENSHOT_LOCALE's when it is set (a locale such as de_DE.UTF-8);
# `make screenshots-de` renders them in German into $(BUILD_DIR)/screenshots-de.
SCREENSHOT_DIR ?= $(BUILD_DIR)/screenshots
SCREENSHOT_LOCALE ?=
SCREENSHOT_ENV := $(if $(SCREENSHOT_LOCALE),env -u LC_ALL -u LC_MESSAGES -u LANGUAGE \
                  LANG=$(SCREENSHOT_LOCALE))
screenshots: configure
	@cmake --build $(BUILD_DIR) --parallel $(JOBS) --target kestrine-screenshots
	@rm -rf $(SCREENSHOT_DIR)
	@for theme in Light Dark; do \
		dir=$(SCREENSHOT_DIR)/$$(echo $$theme | tr A-Z a-z); \
		mkdir -p $$dir; \
		QT_QUICK_CONTROLS_MATERIAL_THEME=$$theme $(SCREENSHOT_ENV) \
			xvfb-run -a -s "-screen 0 1600x1200x24" \
			$(BUILD_DIR)/tools/screenshots/kestrine-screenshots $$dir >$$dir.scenes || exit 1; \
		echo "screenshots: $$(wc -l <$$dir.scenes) scenes in $$dir:"; \
		tr '\n' ' ' <$$dir.scenes | fold -s -w 98 | sed 's/^/  /'; echo; \
	done

screenshots-de:
	@$(MAKE) --no-print-directory screenshots SCREENSHOT_LOCALE=de_DE.UTF-8 \
		SCREENSHOT_DIR=$(BUILD_DIR)/screenshots-de

# Refreshes the catalogues of i18n/ from the sources with lupdate: a new text comes in unfinished,
# a vanished one goes. Translate what is unfinished (Qt Linguist, or any text editor) and commit
# the .ts files; the build compiles them into the programs.
translations: configure
	@cmake --build $(BUILD_DIR) --target update_translations

# The app, kestrine-cli, the desktop entry, the AppStream metadata, the icon and the systemd user
# units of the background check. The units name kestrine-cli by its path under PREFIX.
install: build
	@DESTDIR="$(DESTDIR)" cmake --install $(BUILD_DIR) --prefix "$(PREFIX)"

# The Debian package, built from a copy of the tree in DEB_BUILD_DIR by dpkg-buildpackage -us -uc -b,
# then checked by tools/check-deb and lintian (tools/build-deb). Installs what it needs besides
# `make deps` from tools/deb-packages.txt. DEB_BUILD_OPTIONS are passed on: nocheck skips the unit
# tests and builds only what the package ships.
DEB_BUILD_DIR ?= $(BUILD_DIR)-deb

deb: deps
	@tools/install-deps tools/deb-packages.txt
	@tools/build-deb --jobs $(JOBS) $(DEB_BUILD_DIR)

# Traces the test suite, the app, kestrine-cli and the screenshot tool with strace and fails when
# a Debian package whose files they open is neither in tools/debian-packages.txt nor pulled in by
# one (Depends and Pre-Depends only, as `make deps` installs no Recommends). Needs strace, which
# nothing else needs. Run it after adding a library, a plugin, a font or a tool the tests run.
check-packages: build fuzz-build
	@tools/check-runtime-packages --build-dir $(BUILD_DIR) --jobs $(JOBS)

bench: build
	@for b in $(BUILD_DIR)/bench/bench_*; do [ -x "$$b" ] && "$$b"; done

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR) $(ASAN_BUILD_DIR) $(DEB_BUILD_DIR)

# Fuzzing. The libFuzzer targets of fuzz/ build with clang in FUZZ_BUILD_DIR: `make test` runs each
# for FUZZ_TEST_SECONDS, `make fuzz` for FUZZ_SECONDS each, keeping what it finds in a corpus that
# lasts between runs. `make fuzz-corpus` rewrites the seeds of fuzz/corpus from the Gitea
# simulation's answers.
FUZZ_BUILD_DIR    ?= $(BUILD_DIR)-fuzz
FUZZ_SECONDS      ?= 60
FUZZ_TEST_SECONDS ?= 20
FUZZ_TARGETS      := $(patsubst fuzz/fuzz_%.cpp,%,$(wildcard fuzz/fuzz_*.cpp))

CMAKE_FLAGS += -DKESTRINE_FUZZ_BUILD_DIR=$(abspath $(FUZZ_BUILD_DIR)) \
               -DKESTRINE_FUZZ_SECONDS=$(FUZZ_TEST_SECONDS)

.PHONY: fuzz-build fuzz fuzz-corpus clean-fuzz

test: fuzz-build
clean: clean-fuzz

fuzz-build: deps
	@if command -v clang++ >/dev/null 2>&1; then \
	    cmake -S . -B $(FUZZ_BUILD_DIR) $(CMAKE_FLAGS) -DCMAKE_CXX_COMPILER=clang++ \
	        -DKESTRINE_FUZZ=ON >/dev/null && \
	    cmake --build $(FUZZ_BUILD_DIR) --target fuzzers --parallel $(JOBS); \
	else \
	    echo "fuzz: clang++ is not installed, so the fuzz tests will be skipped" >&2; \
	fi

fuzz: fuzz-build
	@for t in $(FUZZ_TARGETS); do \
	    fuzz/run-fuzzer --seconds $(FUZZ_SECONDS) --corpus $(FUZZ_BUILD_DIR)/corpus/$$t \
	        $(FUZZ_BUILD_DIR) $$t || exit 1; \
	done

fuzz-corpus: fuzz-build
	@cmake --build $(FUZZ_BUILD_DIR) --target fuzz_corpus_tool --parallel $(JOBS)
	@$(FUZZ_BUILD_DIR)/fuzz/fuzz_corpus_tool

clean-fuzz:
	@rm -rf $(FUZZ_BUILD_DIR)
