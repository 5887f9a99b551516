# Front door to the CMake build; `make help` lists the targets.
SHELL := bash
DEMO := build/demo
RELEASE := build/release
SECONDS := 60
PYTHON_FOLDERS := training scripts tests/training
TIDY = $(shell git ls-files -co --exclude-standard 'src/*.cpp' 'tools/*.cpp' 'tests/*.cpp' | grep -v '^tests/fuzz/libfuzzer/')
SOURCES = $(shell git ls-files -co --exclude-standard '*.cpp' '*.h')

PYTHON_PACKAGES := python3-numpy python3-pandas python3-matplotlib python3-pytest python3-nbclient python3-nbformat \
  python3-ipykernel snakemake procps mypy flake8 black

.PHONY: help demo test python-test python-deb build debug-test bench installation checksums data-table format format-check tidy fuzz check-tools deps web web-test clean

help: ## list the targets
	@awk -F ':.*## ' '/^[a-z-]+:.*## / {printf "  make %-14s %s\n", $$1, $$2}' Makefile

demo: deps ## build and predict human ubiquitin into build/demo
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target orbeln installation
	@rm -rf $(DEMO) && mkdir -p $(DEMO)
	@# Relative names: option values cannot contain a hyphen, and the path of the clone may.
	cd $(DEMO) && ORBELN_DIR=../release/install ../release/orbeln -in ../../examples/ubiquitin/ubiquitin.tab
	@echo
	@grep -A 27 '^VARS' $(DEMO)/pred.tab
	@echo "   ..."
	@echo
	@echo "All results:"
	@ls $(DEMO)/*.tab

test: ## build and run every test
	@.ci/run

python-test: build ## run the tests of the Python package, its notebook and the batch workflow; install what they need
	@.ci/python-dependencies $(PYTHON_PACKAGES)
	@cd python && mypy --config-file pyproject.toml orbeln
	@ctest --preset release -R '^python_'

python-deb: ## make the Debian package python3-orbeln in build/
	@python/make_deb.sh build

build: deps ## build the release preset in build/release
	@cmake --preset release
	@cmake --build --preset release

debug-test: deps ## run every test with AddressSanitizer and UndefinedBehaviorSanitizer
	@cmake --preset debug
	@cmake --build --preset debug
	@ctest --preset debug --parallel 2

bench: deps ## build and run the benchmarks (about 5 minutes, 700 MB in build/bench), write docs/PERFORMANCE.md
	@cmake --preset bench
	@cmake --build --preset bench
	build/bench/bench/orbeln_bench --benchmark_out=build/bench/benchmark.json --benchmark_out_format=json
	@command -v python3 >/dev/null || { echo "python3 is needed to write docs/PERFORMANCE.md" >&2; exit 1; }
	@scripts/performance.py build/bench/benchmark.json docs/PERFORMANCE.md

installation: deps ## train an installation: make installation PAIRED=DIR STRUCTURES=DIR OUT=DIR (an hour and a half)
	@PAIRED="$(PAIRED)" STRUCTURES="$(STRUCTURES)" OUT="$(OUT)" CACHE="$(CACHE)" BLASTDB="$(BLASTDB)" \
	  PROFILES="$(PROFILES)" LOOKED="$(LOOKED)" ACCURACY="$(ACCURACY)" QUICK="$(QUICK)" PYTHON="$(PYTHON)" \
	  scripts/make_installation.sh

checksums: ## write data/SHA256SUMS after the tables in data/ have changed
	@scripts/checksums.sh

data-table: build ## rewrite the table list of docs/DATA.md from the built installation
	@scripts/data_table.py --install $(RELEASE)/install --dump $(RELEASE)/orbeln-dump --data data docs/DATA.md

format: check-tools ## reformat every source file
	@clang-format -i $(SOURCES)
	@isort -q $(PYTHON_FOLDERS)
	@black -q $(PYTHON_FOLDERS)

format-check: check-tools ## fail when a source file is not in the house format
	@clang-format --dry-run -Werror $(SOURCES)
	@isort -q --check $(PYTHON_FOLDERS)
	@black -q --check $(PYTHON_FOLDERS)

tidy: deps check-tools ## static analysis: clang-tidy over src, tools, tests; flake8 over the Python code
	@cmake --preset release >/dev/null
	@flake8 $(PYTHON_FOLDERS)
	@printf '%s\n' $(TIDY) | xargs -P 2 -n 1 clang-tidy --quiet --extra-arg=-Wno-unknown-warning-option -p $(RELEASE)

fuzz: build ## fuzz every reader: make fuzz SECONDS=60 HARNESS="table convert-nef" (all of them)
	@scripts/fuzz.sh "$(SECONDS)" $(HARNESS)

check-tools:
	@.ci/dependencies check

web: deps ## build the static site of the page in the browser into build/web (Emscripten, npm)
	@web/dependencies emcc npm
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target installation
	@emcmake cmake -G Ninja -S . -B build/wasm -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF -DORBELN_DATA=OFF >/dev/null
	@# Where Debian keeps what Emscripten needs of node, whichever node is installed.
	@NODE_PATH=/usr/share/nodejs cmake --build build/wasm --target orbeln orbeln-convert orbeln-restraints orbeln-report
	@cd web && npm ci --omit=dev --silent --no-audit --no-fund
	@node web/build.mjs build/wasm $(RELEASE)/install build/web

web-test: web ## test the page in Chromium against the native programs; pictures in build/web-test
	@web/dependencies chromium
	@cmake --build --preset release --target orbeln orbeln-convert orbeln-restraints orbeln-report orbeln-run
	@cd web && npm ci --silent --no-audit --no-fund
	@node --test --test-reporter=spec web/test/web_test.mjs

deps:
	@.ci/dependencies

clean: ## remove everything that was built
	@rm -rf build
