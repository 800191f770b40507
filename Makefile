# The two set-up commands of the README: `make demo` and `make test`.
# Both install what is missing, configure and build.

TEST_DIR  ?= build/test
DEMO_DIR  ?= build/release
BENCH_DIR ?= build/bench
JOBS      ?= $(shell nproc)
CMAKE_GEN := -G Ninja

.PHONY: all deps demo test bench bench-pg screenshot docs clean

all: demo

deps:
	@scripts/install-deps

$(DEMO_DIR)/build.ninja: | deps
	cmake -S . -B $(DEMO_DIR) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release -DKX_BUILD_TESTS=OFF

demo: deps $(DEMO_DIR)/build.ninja
	cmake --build $(DEMO_DIR) -j $(JOBS) --target kxjournal_app
	@scripts/run-gui $(DEMO_DIR)/app/kxjournal demo $(ARGS)

screenshot: deps $(DEMO_DIR)/build.ninja
	cmake --build $(DEMO_DIR) -j $(JOBS) --target kxjournal_app
	rm -f build/screenshot.db build/screenshot.db-wal build/screenshot.db-shm
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --screenshot docs/screenshot.png
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --menu --screenshot docs/context-menu.png
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --picker yh --screenshot docs/account-picker.png
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --explain-list --screenshot docs/explain-list.png
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --daily-view --screenshot docs/daily-report.png
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --preview --screenshot docs/print-preview.png
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --side-panel --screenshot docs/side-panel.png
	$(DEMO_DIR)/app/kxjournal statement sample --db sqlite:build/screenshot.db --book 020101 --to $$(date +%Y)-10-31 --out build/statement.csv
	$(DEMO_DIR)/app/kxjournal statement import --db sqlite:build/screenshot.db --book 020101 build/statement.csv
	$(DEMO_DIR)/app/kxjournal reconcile --db sqlite:build/screenshot.db --book 020101 --to $$(date +%Y)-10-31 --auto --user 王会计 --out build/reconcile.pdf
	QT_QPA_PLATFORM=offscreen $(DEMO_DIR)/app/kxjournal demo --db sqlite:build/screenshot.db --reconcile-view --screenshot docs/reconcile-view.png
	pdftoppm -r 70 -png -singlefile build/reconcile.pdf docs/reconcile-statement

$(TEST_DIR)/build.ninja: | deps
	cmake -S . -B $(TEST_DIR) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DKX_SANITIZE=ON -DKX_BUILD_APP=ON

test: deps $(TEST_DIR)/build.ninja
	cmake --build $(TEST_DIR) -j $(JOBS)
	cd $(TEST_DIR) && ctest --output-on-failure -j $(JOBS)

$(BENCH_DIR)/build.ninja: | deps
	cmake -S . -B $(BENCH_DIR) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release -DKX_BUILD_TESTS=OFF -DKX_BUILD_APP=OFF -DKX_BUILD_BENCH=ON

bench: deps $(BENCH_DIR)/build.ninja
	cmake --build $(BENCH_DIR) -j $(JOBS)
	$(BENCH_DIR)/bench/kxjournal_bench $(ARGS)

# The benchmarks again with a throw-away PostgreSQL server, stopped afterwards.
bench-pg: deps $(BENCH_DIR)/build.ninja
	cmake --build $(BENCH_DIR) -j $(JOBS)
	tests/support/pg-cluster start build/bench-pg
	KX_BENCH_PG_URL=$$(cat build/bench-pg/url) $(BENCH_DIR)/bench/kxjournal_bench $(ARGS); \
	  rc=$$?; tests/support/pg-cluster stop build/bench-pg; exit $$rc

# Reference documentation of the public headers: build/docs/html, warnings
# (an undocumented public name is one) in build/docs/warnings.log.
docs: deps
	mkdir -p build/docs
	doxygen docs/Doxyfile
	@if [ -s build/docs/warnings.log ]; then cat build/docs/warnings.log; echo "docs: $$(wc -l < build/docs/warnings.log) warning lines in build/docs/warnings.log"; fi
	@echo "docs: build/docs/html/index.html"

clean:
	rm -rf build
