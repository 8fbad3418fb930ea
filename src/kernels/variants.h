/// The forms in which every row loop exists in this build, each in a namespace of its own.
#pragma once

#if defined(__x86_64__)
#define MORVALE_FOR_EACH_VARIANT(declaration) \
  namespace portable {                        \
  declaration;                                \
  }                                           \
  namespace avx2 {                            \
  declaration;                                \
  }                                           \
  namespace avx512 {                          \
  declaration;                                \
  }
#elif defined(__aarch64__)
#define MORVALE_FOR_EACH_VARIANT(declaration) \
  namespace portable {                        \
  declaration;                                \
  }                                           \
  namespace neon {                            \
  declaration;                                \
  }
#else
#define MORVALE_FOR_EACH_VARIANT(declaration) \
  namespace portable {                        \
  declaration;                                \
  }
#endif
