# The two set-up commands: `make run` and `make test`. Both install what is missing from
# Debian's packages first (as root), so they work on a fresh Debian 12 machine.
BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo

PACKAGES := cmake ninja-build g++ pkg-config ccache \
	qt6-base-dev libqt6sql6-sqlite libqt6sql6-psql libzip-dev libicu-dev \
	libgtest-dev libgmock-dev libxml2-utils zip unzip sqlite3 postgresql \
	libx11-dev python3 fonts-dejavu-core xvfb xauth x11-utils poppler-utils imagemagick \
	qt6-tools-dev qt6-l10n-tools libqt6svg6 qt6-translations-l10n dpkg-dev file gzip man-db \
	desktop-file-utils shared-mime-info xdg-utils libfile-mimeinfo-perl \
	php-symfony-translation translate-toolkit

SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

.PHONY: all deps configure build test run screenshots clean

all: build

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q 'install ok installed' || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  $(SUDO) apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq --no-install-recommends $$missing; \
	fi

$(BUILD_DIR)/build.ninja: | deps
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE)

configure: deps $(BUILD_DIR)/build.ninja

build: configure
	cmake --build $(BUILD_DIR)

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j2

run: build
	examples/round-trip.sh $(BUILD_DIR)

# The pictures of the window in docs/screenshots, drawn without any display.
screenshots: build
	QT_QPA_PLATFORM=offscreen $(BUILD_DIR)/tools/translator_screenshots docs/screenshots \
	  examples/customer-satisfaction.xml

clean:
	rm -rf $(BUILD_DIR)
