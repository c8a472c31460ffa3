// A library that has nothing to load.
int orvo_bench_empty();
int orvo_bench_empty() {
  return 0;
}
