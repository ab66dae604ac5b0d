// Sanitizers leave the processor's signals to the guard.

extern "C" {
const char* __asan_default_options() {
    return "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_sigtrap=0";
}
const char* __tsan_default_options() {
    return "handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_sigtrap=0:report_signal_unsafe=0";
}
}
