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

.PHONY: all deps configure build test run install bench format clean

all: build

deps:
	@tools/install-deps

configure: deps
	@cmake -S . -B $(BUILD_DIR) $(CMAKE_FLAGS) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) --parallel $(JOBS)

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure --parallel $(JOBS)

# Without a display (neither DISPLAY nor WAYLAND_DISPLAY set) the app cannot open its window; the
# demo inbox is shown on the terminal instead, by kestrine-cli over the same built-in demo instance.
ifeq ($(strip $(DISPLAY)$(WAYLAND_DISPLAY)),)
run: build
	@echo "kestrine: no display (DISPLAY and WAYLAND_DISPLAY are unset), so here is the demo inbox from kestrine-cli:" >&2
	@$(BUILD_DIR)/src/cli/kestrine-cli --demo inbox
else
run: build
	@echo "kestrine: the app is not built yet; only its libraries and tests exist so far." >&2
	@exit 1
endif

# The app, kestrine-cli, the desktop entry, the AppStream metadata, the icon and the systemd user
# units of the background check. The units name kestrine-cli by its path under PREFIX.
install: build
	@DESTDIR="$(DESTDIR)" cmake --install $(BUILD_DIR) --prefix "$(PREFIX)"

bench: build
	@for b in $(BUILD_DIR)/bench/bench_*; do [ -x "$$b" ] && "$$b"; done

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	@rm -rf $(BUILD_DIR)
