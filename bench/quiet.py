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


def session_seconds(prefix):
    """Of the living processes of the Wine session with the prefix: its server and services work for us."""
    total = 0
    wanted = ("WINEPREFIX=" + prefix).encode()
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open(f"/proc/{entry}/environ", "rb") as file:
                if wanted not in file.read().split(b"\0"):
                    continue
            with open(f"/proc/{entry}/stat", encoding="ascii", errors="replace") as file:
                fields = file.read().rsplit(")", 1)[1].split()
            total += (int(fields[11]) + int(fields[12])) / TICKS
        except OSError:
            continue  # ended meanwhile
    return total


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
