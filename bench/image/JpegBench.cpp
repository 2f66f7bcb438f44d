int jpeg_bench_placeholder;
