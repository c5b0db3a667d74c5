// A filter of system calls (seccomp(2)): everything is allowed, except for what changes something outside
// this process, or tells somebody about it. Denied calls fail with EPERM, as they do for who has no rights.
#include "ScanSide.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
/// From here on the numbers of another interface begin.
constexpr std::uint32_t kOtherNumbers = 0x40000000;
#elif defined(__i386__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_I386;
#elif defined(__aarch64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#endif

constexpr std::uint32_t kWriting =
    O_WRONLY | O_RDWR | O_CREAT | O_TRUNC | O_APPEND | (static_cast<std::uint32_t>(O_TMPFILE) & ~O_DIRECTORY);

/// Names of each system's own are left out where they are missing.
constexpr std::uint32_t kDenied[] = {
    // Networks.
    SYS_socket,
    SYS_socketpair,
    SYS_bind,
    SYS_connect,
    SYS_listen,
    SYS_accept4,
    SYS_sendmsg,
    SYS_sendmmsg,
#ifdef SYS_accept
    SYS_accept,
#endif
#ifdef SYS_socketcall
    SYS_socketcall,
#endif
    SYS_io_uring_setup,
    SYS_io_uring_enter,
    SYS_io_uring_register,
    // Files: their content, names and rights. Opening is judged by its flags.
    SYS_truncate,
    SYS_renameat2,
    SYS_unlinkat,
    SYS_mkdirat,
    SYS_linkat,
    SYS_symlinkat,
    SYS_mknodat,
    SYS_fchmod,
    SYS_fchmodat,
    SYS_fchown,
    SYS_fchownat,
    SYS_utimensat,
    SYS_setxattr,
    SYS_lsetxattr,
    SYS_fsetxattr,
    SYS_removexattr,
    SYS_lremovexattr,
    SYS_fremovexattr,
    SYS_name_to_handle_at,
    SYS_open_by_handle_at,
    SYS_openat2,
#ifdef SYS_creat
    SYS_creat,
    SYS_rename,
    SYS_unlink,
    SYS_mkdir,
    SYS_rmdir,
    SYS_link,
    SYS_symlink,
    SYS_mknod,
    SYS_chmod,
    SYS_chown,
    SYS_lchown,
    SYS_utime,
    SYS_utimes,
    SYS_futimesat,
#endif
#ifdef SYS_renameat
    SYS_renameat,
#endif
#ifdef SYS_truncate64
    SYS_truncate64,
    SYS_chown32,
    SYS_fchown32,
    SYS_lchown32,
    SYS_utimensat_time64,
#endif
    // Processes.
    SYS_execve,
    SYS_execveat,
    SYS_kill,
    SYS_tkill,
    SYS_rt_sigqueueinfo,
    SYS_rt_tgsigqueueinfo,
    SYS_ptrace,
    SYS_process_vm_readv,
    SYS_process_vm_writev,
    SYS_pidfd_open,
    SYS_pidfd_send_signal,
    SYS_pidfd_getfd,
    SYS_process_madvise,
    SYS_setns,
    SYS_unshare,
    SYS_userfaultfd,
    SYS_bpf,
    SYS_perf_event_open,
#ifdef SYS_setrlimit
    SYS_setrlimit,
#endif
#ifdef SYS_fork
    SYS_fork,
    SYS_vfork,
#endif
    // What processes share.
    SYS_mq_open,
    SYS_mq_unlink,
    SYS_add_key,
    SYS_request_key,
    SYS_keyctl,
#ifdef SYS_ipc
    SYS_ipc,
#endif
    SYS_shmget,
    SYS_shmat,
    SYS_semget,
    SYS_msgget,
    // The system, for users that may.
    SYS_mount,
    SYS_umount2,
    SYS_open_tree,
    SYS_move_mount,
    SYS_fsopen,
    SYS_fsmount,
    SYS_fspick,
    SYS_pivot_root,
    SYS_chroot,
    SYS_reboot,
    SYS_init_module,
    SYS_finit_module,
    SYS_delete_module,
    SYS_kexec_load,
    SYS_swapon,
    SYS_swapoff,
    SYS_settimeofday,
    SYS_clock_settime,
    SYS_clock_adjtime,
    SYS_adjtimex,
    SYS_sethostname,
    SYS_setdomainname,
    SYS_acct,
    SYS_quotactl,
#ifdef SYS_iopl
    SYS_iopl,
    SYS_ioperm,
#endif
#ifdef SYS_kexec_file_load
    SYS_kexec_file_load,
#endif
};

/// The program of the filter, instruction by instruction.
class CFilter {
public:
    CFilter() {
        Load(offsetof(seccomp_data, arch));
        Add({BPF_JMP | BPF_JEQ | BPF_K, 1, 0, kArchitecture});
        Return(SECCOMP_RET_KILL_PROCESS);
        LoadNumber();
#if defined(__x86_64__)
        Add({BPF_JMP | BPF_JGE | BPF_K, 0, 1, kOtherNumbers});
        Return(Error(EPERM));
#endif
        for (const std::uint32_t number : kDenied) {
            Unless(number, 1);
            Return(Error(EPERM));
        }
#ifdef SYS_open
        DenyFlags(SYS_open, 1, kWriting);
#endif
        DenyFlags(SYS_openat, 2, kWriting);
        // Its callers then take clone, whose flags can be seen.
        Unless(SYS_clone3, 1);
        Return(Error(ENOSYS));
        AllowOnlyFlags(SYS_clone, 0, CLONE_THREAD);
        AllowOnlyValue(SYS_tgkill, 0, static_cast<std::uint32_t>(getpid()));
        // Limits may be asked for and not set.
        AllowOnlyValue(SYS_prlimit64, 0, 0);
        AllowOnlyValue(SYS_prlimit64, 2, 0);
        AllowOnlyValue(SYS_prlimit64, 2, 0, THalf::Upper);
        Return(SECCOMP_RET_ALLOW);
    }

    bool Install() {
        sock_fprog program{static_cast<unsigned short>(code_.size()), code_.data()};
        return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
               prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0) == 0;
    }

private:
    static std::uint32_t Error(int number) {
        return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(number);
    }

    void Add(const sock_filter& instruction) {
        code_.push_back(instruction);
    }
    void Load(std::size_t offset) {
        Add({BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<std::uint32_t>(offset)});
    }
    void LoadNumber() {
        Load(offsetof(seccomp_data, nr));
    }
    /// A half of an argument, on systems that store the lower one first.
    enum class THalf : std::size_t { Lower = 0, Upper = 4 };
    void LoadArgument(std::size_t index, THalf half) {
        Load(offsetof(seccomp_data, args) + index * sizeof(std::uint64_t) + static_cast<std::size_t>(half));
    }
    void Return(std::uint32_t action) {
        Add({BPF_RET | BPF_K, 0, 0, action});
    }
    /// Passes over so many instructions unless the call has that number.
    void Unless(std::uint32_t number, std::uint8_t count) {
        Add({BPF_JMP | BPF_JEQ | BPF_K, 0, count, number});
    }

    /// Lets `jump` judge an argument of a call: it passes over the refusal, or goes on to it.
    void Judge(std::uint32_t number, std::size_t argument, const sock_filter& jump,
               THalf half = THalf::Lower) {
        Unless(number, 4);
        LoadArgument(argument, half);
        Add(jump);
        Return(Error(EPERM));
        LoadNumber();
    }
    void DenyFlags(std::uint32_t number, std::size_t argument, std::uint32_t flags) {
        Judge(number, argument, {BPF_JMP | BPF_JSET | BPF_K, 0, 1, flags});
    }
    void AllowOnlyFlags(std::uint32_t number, std::size_t argument, std::uint32_t flags) {
        Judge(number, argument, {BPF_JMP | BPF_JSET | BPF_K, 1, 0, flags});
    }
    void AllowOnlyValue(std::uint32_t number, std::size_t argument, std::uint32_t value,
                        THalf half = THalf::Lower) {
        Judge(number, argument, {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, value}, half);
    }

    std::vector<sock_filter> code_;
};

} // namespace

bool EnterSandbox() {
    return CFilter().Install();
}
