// A thread's own value of plain type that a signal handler may read.
#pragma once

#if defined(__ELF__)
// Reserved when the thread starts: other models may allocate at the first use, which a handler must not.
#define THREAD_VALUE thread_local __attribute__((tls_model("initial-exec")))
#else
#define THREAD_VALUE thread_local
#endif
