"""What the machine does beside the measurement: a figure counts only when nobody else worked meanwhile."""
import os
import resource
import time

TICKS = os.sysconf("SC_CLK_TCK")


def busy_seconds():
    """Of all processors together since the start of the machine, what a hypervisor took away included."""
    with open("/proc/stat", encoding="ascii") as file:
        user, nice, system, _, _, irq, softirq, steal = map(int, file.readline().split()[1:9])
    return (user + nice + system + irq + softirq + steal) / TICKS


def session_processes(prefix):
    """The living processes of the Wine session with the prefix."""
    wanted = ("WINEPREFIX=" + prefix).encode()
    for entry in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{entry}/environ", "rb") as file:
                is_wanted = wanted in file.read().split(b"\0")
        except OSError:
            continue  # ended meanwhile
        if is_wanted:
            yield int(entry)


def session_seconds(prefix):
    """Of the living processes of the Wine session with the prefix: its server and services work for us."""
    total = 0
    for process in session_processes(prefix):
        try:
            with open(f"/proc/{process}/stat", encoding="ascii", errors="replace") as file:
                fields = file.read().rsplit(")", 1)[1].split()
            total += (int(fields[11]) + int(fields[12])) / TICKS
        except OSError:
            continue  # ended meanwhile
    return total


def share_one_processor(prefix):
    """This process with all that it starts, and the Wine session. Who asks Wine's server waits for its answer; on another
    processor the server has to be woken, and what that takes is a matter of the machine below."""
    processor = {max(os.sched_getaffinity(0))}
    os.sched_setaffinity(0, processor)
    for process in session_processes(prefix):
        try:
            for thread in os.listdir(f"/proc/{process}/task"):
                os.sched_setaffinity(int(thread), processor)
        except OSError:
            continue  # ended meanwhile


def own_seconds():
    return sum(usage.ru_utime + usage.ru_stime
               for usage in map(resource.getrusage, (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)))


class Watch:
    """Over the time between start and stop: what part of one processor others used."""

    def __init__(self, prefix):
        self.prefix = prefix

    def start(self):
        self.before = time.monotonic(), busy_seconds(), session_seconds(self.prefix) + own_seconds()

    def stop(self):
        wall, busy, ours = (time.monotonic() - self.before[0], busy_seconds() - self.before[1],
                            session_seconds(self.prefix) + own_seconds() - self.before[2])
        return max(0.0, busy - ours) / wall
