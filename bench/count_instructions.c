/* A plugin for QEMU that counts the instructions of the program that it runs, for vek_bench_plain:
 *   cc -shared -fPIC -O2 -o count.so bench/count_instructions.c
 *   qemu-arm -plugin ./count.so vek_bench_plain --instructions
 * The program asks by a system call of number 0x7EC0, whose argument is where to write the number. What
 * is declared here belongs to version 1 of QEMU's interface, whose header distributions leave out. */
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <unistd.h>

struct qemu_plugin_tb;
enum { add = 0 };

void qemu_plugin_register_vcpu_tb_trans_cb(uint64_t id,
                                           void (*translated)(uint64_t id, struct qemu_plugin_tb*));
void qemu_plugin_register_vcpu_syscall_cb(uint64_t id,
                                          void (*called)(uint64_t id, unsigned processor,
                                                         int64_t number, uint64_t a1, uint64_t a2,
                                                         uint64_t a3, uint64_t a4, uint64_t a5,
                                                         uint64_t a6, uint64_t a7, uint64_t a8));
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* block, int operation,
                                              void* counter, uint64_t value);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);

__attribute__((visibility("default"))) int qemu_plugin_version = 1;

static uint64_t count;

static void translated(uint64_t id, struct qemu_plugin_tb* block) {
  (void)id;
  qemu_plugin_register_vcpu_tb_exec_inline(block, add, &count, qemu_plugin_tb_n_insns(block));
}

static void called(uint64_t id, unsigned processor, int64_t number, uint64_t a1, uint64_t a2,
                   uint64_t a3, uint64_t a4, uint64_t a5, uint64_t a6, uint64_t a7, uint64_t a8) {
  (void)id, (void)processor, (void)a2, (void)a3, (void)a4, (void)a5, (void)a6, (void)a7, (void)a8;
  if (number != 0x7EC0) return;
  const ssize_t written = write((int)a1, &count, sizeof count);
  (void)written;
}

__attribute__((visibility("default"))) int qemu_plugin_install(uint64_t id, const void* info,
                                                               int argumentCount,
                                                               char** arguments) {
  (void)info, (void)argumentCount, (void)arguments;
  qemu_plugin_register_vcpu_tb_trans_cb(id, translated);
  qemu_plugin_register_vcpu_syscall_cb(id, called);
  return 0;
}
