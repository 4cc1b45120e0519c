#include "Sandbox.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <memory>

#include <seccomp.h>

namespace vxlsync::host
{

namespace
{

// Writes the rules of one filter; the first rule that cannot be written spoils all.
class Filter
{
public:
    Filter() : context(seccomp_init(SCMP_ACT_ALLOW), &seccomp_release) {}

    // Refuses the call with the error, if all that is said of its arguments holds. A call that this
    // processor or the library does not know cannot be made or refused by name and is passed over.
    void refuse(const char* call, int error, std::initializer_list<scmp_arg_cmp> arguments = {})
    {
        const int number = seccomp_syscall_resolve_name(call);
        if (number != __NR_SCMP_ERROR) refuse(number, error, arguments);
    }

    // Takes a call that is younger than the library, by its number.
    void refuse(int number, int error, std::initializer_list<scmp_arg_cmp> arguments = {})
    {
        if (!context) return;
        const int failure = seccomp_rule_add_array(
            context.get(), SCMP_ACT_ERRNO(static_cast<std::uint32_t>(error)), number,
            static_cast<unsigned int>(arguments.size()), arguments.begin());
        if (failure != 0) context.reset();
    }

    // True if the kernel has taken it, for this thread and those that it starts.
    bool load()
    {
        if (!context) return false;
        // Older kernels would slow down all of the process's memory otherwise. It guards against
        // programs that run code of others by design. Where it is not known it is not needed.
        static_cast<void>(seccomp_attr_set(context.get(), SCMP_FLTATR_CTL_SSB, 1));
        return seccomp_load(context.get()) == 0;
    }

private:
    std::unique_ptr<void, decltype(&seccomp_release)> context;
};

// One bit of an argument of the call, by number from 0, is set.
scmp_arg_cmp hasBit(unsigned int argument, unsigned int bit)
{
    return scmp_arg_cmp{argument, SCMP_CMP_MASKED_EQ, bit, bit};
}

void refuseChangingFiles(Filter& filter)
{
    // Flags stand after the path, and for openat after the folder as well.
    for (const int flag : {O_WRONLY, O_RDWR, O_CREAT, O_TRUNC}) {
        filter.refuse("open", EPERM, {hasBit(1, static_cast<unsigned int>(flag))});
        filter.refuse("openat", EPERM, {hasBit(2, static_cast<unsigned int>(flag))});
    }
    // Its flags lie in memory, which no filter sees. Who is told that it does not exist takes
    // openat.
    filter.refuse("openat2", ENOSYS);
    for (const char* call : {"creat",        "truncate",         "truncate64",
                             "unlink",       "unlinkat",         "rename",
                             "renameat",     "renameat2",        "link",
                             "linkat",       "symlink",          "symlinkat",
                             "mkdir",        "mkdirat",          "rmdir",
                             "mknod",        "mknodat",          "chmod",
                             "fchmod",       "fchmodat",         "chown",
                             "lchown",       "fchown",           "fchownat",
                             "chown32",      "lchown32",         "fchown32",
                             "setxattr",     "lsetxattr",        "fsetxattr",
                             "removexattr",  "lremovexattr",     "fremovexattr",
                             "utime",        "utimes",           "futimesat",
                             "utimensat",    "utimensat_time64", "open_by_handle_at",
                             "memfd_create", "memfd_secret"})
        filter.refuse(call, EPERM);
    // fchmodat2, setxattrat, removexattrat and file_setattr, on every processor.
    for (const int number : {452, 463, 466, 469})
        filter.refuse(number, EPERM);
}

void refuseTalking(Filter& filter)
{
    for (const char* call :
         {"socket",  "socketpair", "socketcall", "connect", "bind",   "listen",  "accept",
          "accept4", "shmget",     "shmat",      "shmctl",  "msgget", "msgsnd",  "msgrcv",
          "msgctl",  "semget",     "semop",      "semctl",  "ipc",    "mq_open", "mq_unlink"})
        filter.refuse(call, EPERM);
    // Letters that are put into the terminal's input are commands to the user's shell.
    for (const scmp_datum_t request : std::initializer_list<scmp_datum_t>{TIOCSTI, TIOCLINUX}) {
        constexpr scmp_datum_t requestBits = 0xFFFFFFFFU;
        filter.refuse("ioctl", EPERM, {scmp_arg_cmp{1, SCMP_CMP_MASKED_EQ, requestBits, request}});
    }
}

void refuseProcesses(Filter& filter)
{
    for (const char* call :
         {"execve", "execveat", "fork", "vfork", "ptrace", "process_vm_readv", "process_vm_writev",
          "process_madvise", "process_mrelease", "pidfd_open", "pidfd_getfd", "pidfd_send_signal",
          "kcmp", "rt_sigqueueinfo", "rt_tgsigqueueinfo", "tkill"})
        filter.refuse(call, EPERM);
    // Threads start as they always did: clone3, whose flags no filter sees, seems not to exist.
    filter.refuse("clone3", ENOSYS);
    filter.refuse("clone", EPERM, {scmp_arg_cmp{0, SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0}});
    // Who aborts signals himself.
    const auto self = static_cast<scmp_datum_t>(getpid());
    for (const char* call : {"kill", "tgkill"})
        filter.refuse(call, EPERM, {scmp_arg_cmp{0, SCMP_CMP_NE, self, 0}});
}

// What only administrators have a use for, and what has given ordinary users a hold on the kernel.
void refuseTheSystem(Filter& filter)
{
    for (const char* call : {"mount",
                             "umount",
                             "umount2",
                             "move_mount",
                             "open_tree",
                             "fsopen",
                             "fsconfig",
                             "fsmount",
                             "fspick",
                             "mount_setattr",
                             "pivot_root",
                             "chroot",
                             "unshare",
                             "setns",
                             "swapon",
                             "swapoff",
                             "acct",
                             "quotactl",
                             "quotactl_fd",
                             "init_module",
                             "finit_module",
                             "delete_module",
                             "kexec_load",
                             "kexec_file_load",
                             "reboot",
                             "sethostname",
                             "setdomainname",
                             "settimeofday",
                             "clock_settime",
                             "clock_settime64",
                             "iopl",
                             "ioperm",
                             "add_key",
                             "request_key",
                             "keyctl",
                             "bpf",
                             "perf_event_open",
                             "userfaultfd",
                             "fanotify_init",
                             "lookup_dcookie",
                             "syslog",
                             "vhangup",
                             "personality"})
        filter.refuse(call, EPERM);
    // Programs take it for a kernel without it.
    for (const char* call : {"io_uring_setup", "io_uring_enter", "io_uring_register"})
        filter.refuse(call, ENOSYS);
}

} // namespace

bool filterCalls()
{
    Filter filter;
    refuseChangingFiles(filter);
    refuseTalking(filter);
    refuseProcesses(filter);
    refuseTheSystem(filter);
    return filter.load();
}

} // namespace vxlsync::host
