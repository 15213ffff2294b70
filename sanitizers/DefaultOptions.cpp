// The options an executable of a sanitizer build starts with, whoever runs it. The runtime asks
// for them before main(); options in the environment are applied after them.
//
// KOVENA_SANITIZER_DIR is the folder of the suppression files, set by the build.

extern "C" {

// Every report ends the process, and an ended process fails its test.
const char *__asan_default_options()
{
    return "halt_on_error=1:abort_on_error=0:detect_leaks=1:detect_stack_use_after_return=1"
           ":check_initialization_order=1:strict_init_order=1";
}

const char *__ubsan_default_options()
{
    return "halt_on_error=1:print_stacktrace=1";
}

const char *__lsan_default_options()
{
    return "suppressions=" KOVENA_SANITIZER_DIR "/lsan.supp:print_suppressions=0";
}

// Reports do not stop the run, so one run shows every race; the exit code still fails it.
const char *__tsan_default_options()
{
    return "suppressions=" KOVENA_SANITIZER_DIR "/tsan.supp:halt_on_error=0:exitcode=66"
           ":second_deadlock_stack=1:history_size=4:print_suppressions=0";
}

} // extern "C"
