#pragma once

// SONDRAVA_CLONES in front of a function compiles it twice, plain and for AVX2, and the loader
// picks. Both round alike, as no multiply-add is fused. ThreadSanitizer starts before the loader's
// choice could run, so there it means nothing, as on other machines; nor under clang, whose clones
// miss the templates that they alone instantiate.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__) && !defined(__clang__)
#define SONDRAVA_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define SONDRAVA_CLONES
#endif
