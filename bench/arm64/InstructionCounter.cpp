#include <cstddef>
#include <cstdint>
#include <cstdio>

/**
 * A plugin of QEMU's user mode for 64-bit Arm: counts the instructions of each section that the
 * benchmark marks, on the thread that marks it. Prints a line a section to standard error: all
 * instructions, and those of the vector and floating-point unit.
 */

// The part of QEMU's plugin interface, version 1, that is used here; Debian packages no header.
extern "C" {
using qemu_plugin_id_t = uint64_t;
struct qemu_info_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum qemu_plugin_cb_flags { QEMU_PLUGIN_CB_NO_REGS };

void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id,
                                           void (*callback)(qemu_plugin_id_t, qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_cb(qemu_plugin_tb* block, void (*callback)(unsigned, void*),
                                          qemu_plugin_cb_flags flags, void* data);
void qemu_plugin_register_vcpu_syscall_cb(qemu_plugin_id_t id,
                                          void (*callback)(qemu_plugin_id_t, unsigned, int64_t,
                                                           uint64_t, uint64_t, uint64_t, uint64_t,
                                                           uint64_t, uint64_t, uint64_t, uint64_t));
size_t qemu_plugin_tb_n_insns(qemu_plugin_tb const* block);
qemu_plugin_insn* qemu_plugin_tb_get_insn(qemu_plugin_tb const* block, size_t index);
void const* qemu_plugin_insn_data(qemu_plugin_insn const* instruction);

__attribute__((visibility("default"))) int qemu_plugin_version = 1;
__attribute__((visibility("default"))) int qemu_plugin_install(qemu_plugin_id_t id,
                                                               qemu_info_t const* info, int count,
                                                               char** arguments);
}

namespace {

constexpr int64_t kWrite = 64;  // the number of the system call
constexpr uint64_t kNoDescriptor = UINT32_MAX;

/** Instructions of a block of code, or of a thread's open section. */
struct Count {
    uint64_t all;
    uint64_t vector;
};

thread_local Count tSection;
thread_local bool tIsOpen;

/** Whether a word is an instruction of the vector and floating-point unit. */
bool isVector(uint32_t word) {
    constexpr uint32_t kUnit = 3u << 26;
    return (word & kUnit) == kUnit;
}

void onBlockExecuted(unsigned, void* data) {
    if (tIsOpen) {
        auto const* const block = static_cast<Count const*>(data);
        tSection.all += block->all;
        tSection.vector += block->vector;
    }
}

void onBlockTranslated(qemu_plugin_id_t, qemu_plugin_tb* block) {
    auto* const count = new Count{qemu_plugin_tb_n_insns(block), 0};  // as long as the process
    for (size_t i = 0; i < count->all; ++i) {
        void const* const word = qemu_plugin_insn_data(qemu_plugin_tb_get_insn(block, i));
        count->vector += isVector(*static_cast<uint32_t const*>(word)) ? 1 : 0;
    }
    qemu_plugin_register_vcpu_tb_exec_cb(block, onBlockExecuted, QEMU_PLUGIN_CB_NO_REGS, count);
}

/** A write to no descriptor is a mark: it opens a section, or closes the one that is open. */
void onSystemCall(qemu_plugin_id_t, unsigned, int64_t number, uint64_t descriptor, uint64_t,
                  uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t) {
    if (number != kWrite || static_cast<uint32_t>(descriptor) != kNoDescriptor) {
        return;
    }
    if (tIsOpen) {
        fprintf(stderr, "section %llu %llu\n", static_cast<unsigned long long>(tSection.all),
                static_cast<unsigned long long>(tSection.vector));
    }
    tIsOpen = !tIsOpen;
    tSection = {};
}

}  // namespace

int qemu_plugin_install(qemu_plugin_id_t id, qemu_info_t const*, int, char**) {
    qemu_plugin_register_vcpu_tb_trans_cb(id, onBlockTranslated);
    qemu_plugin_register_vcpu_syscall_cb(id, onSystemCall);
    return 0;
}
