# shellcheck shell=bash disable=SC2034
# Google Benchmark, a static library, for the benchmarks under Wine. Sourced by scripts/codecs.sh.
libraries="Google Benchmark"
packages=(benchmark)
sources=("benchmark benchmark_1.7.1.orig.tar.gz 6430e4092653380d9dc4ccb45a1e2dc9259d581f4866dc0759713126056bc1d7 Apache-2.0")

build_libraries() {
    by_cmake benchmark -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF -DBENCHMARK_INSTALL_DOCS=OFF \
        -DBENCHMARK_ENABLE_WERROR=OFF -DGIT_VERSION=0.0.0
}
