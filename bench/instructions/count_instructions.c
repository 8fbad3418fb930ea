// A plugin for qemu-user: writes how many instructions were executed between the program's first two calls of
// getppid(). It is loaded with `-plugin FILE.so,out=COUNT`. The plugin interface has no header in Debian;
// what is used of it stands below, as version 1 defines it.
#include <inttypes.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

typedef uint64_t qemu_plugin_id_t;
struct qemu_plugin_tb;
typedef void (*TranslateCallback)(qemu_plugin_id_t, struct qemu_plugin_tb*);
typedef void (*SyscallCallback)(qemu_plugin_id_t, unsigned vcpu, int64_t number, uint64_t, uint64_t, uint64_t,
                                uint64_t, uint64_t, uint64_t, uint64_t, uint64_t);
typedef void (*ExitCallback)(qemu_plugin_id_t, void*);
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t, TranslateCallback);
void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t, SyscallCallback);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t, ExitCallback, void*);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb*);
enum { kAddToCounter = 0 };
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb*, int operation, void* counter,
                                              uint64_t by);

#define EXPORT __attribute__((visibility("default")))
EXPORT int qemu_plugin_version = 1;

enum { kGetppid = 173 };  // on 64-bit Arm
static uint64_t executed, marks[2];
static int marked;
static char out[4096];

/// Every block adds its length whenever it is entered.
static void on_translation(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
  qemu_plugin_register_vcpu_tb_exec_inline(block, kAddToCounter, &executed, qemu_plugin_tb_n_insns(block));
}

static void on_syscall(qemu_plugin_id_t id, unsigned vcpu, int64_t number, uint64_t a, uint64_t b, uint64_t c,
                       uint64_t d, uint64_t e, uint64_t f, uint64_t g, uint64_t h) {
  if (number == kGetppid && marked < 2) marks[marked++] = executed;
}

static void on_exit_of_program(qemu_plugin_id_t id, void* unused) {
  FILE* file = fopen(out, "w");
  if (file == NULL) return;
  fprintf(file, "%" PRIu64 "\n", marked == 2 ? marks[1] - marks[0] : 0);
  fclose(file);
}

EXPORT int qemu_plugin_install(qemu_plugin_id_t id, const void* info, int count, char** arguments) {
  for (int i = 0; i < count; ++i) {
    if (strncmp(arguments[i], "out=", 4) == 0) snprintf(out, sizeof out, "%s", arguments[i] + 4);
  }
  qemu_plugin_register_vcpu_tb_trans_cb(id, on_translation);
  qemu_plugin_register_vcpu_syscall_cb(id, on_syscall);
  qemu_plugin_register_atexit_cb(id, on_exit_of_program, NULL);
  return 0;
}
