// Coverage builds only: a child process of the fault sweep ends with _exit, which runs nothing at the end and so would
// throw its counters away. The library and the program have their own; each is written out by this function of its own.
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {

void __gcov_dump();

#ifdef qvr_model_EXPORTS
__attribute__((visibility("default"))) void qvrWriteCounters() {
    __gcov_dump();
}
#else
void qvrWriteCounters();

void _exit(int code) {
    qvrWriteCounters();
    __gcov_dump();
    ::syscall(SYS_exit_group, code);
    __builtin_unreachable();
}
#endif
}
