#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Runs a program without its output. Prints its elapsed and processor seconds, its largest resident memory and what it
read through the calls of the system, both in megabytes of 10^6 bytes; ends with its exit code.

A process of its own: the system counts the memory of the process that starts a program as that of the program.
"""
import os
import sys
import time

begin = time.monotonic()
process = os.fork()
if process == 0:
    for stream in (1, 2):
        os.dup2(os.open(os.devnull, os.O_WRONLY), stream)
    os.execvp(sys.argv[1], sys.argv[1:])
os.waitid(os.P_PID, process, os.WEXITED | os.WNOWAIT)
elapsed = time.monotonic() - begin
with open(f"/proc/{process}/io", encoding="ascii") as file:
    counts = dict(line.split(": ") for line in file)
_, status, used = os.wait4(process, 0)
print(elapsed, used.ru_utime + used.ru_stime, used.ru_maxrss * 1024 / 1e6, int(counts["rchar"]) / 1e6)
sys.exit(os.waitstatus_to_exitcode(status) & 255)
