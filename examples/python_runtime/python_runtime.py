#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A program in Python on libplcruntime: it watches two variables, writes one of them, and says how that ended.

    python_runtime.py HOST PORT [LIBRARY [DRIVER]]

Python loads libraries of its own architecture only: a 64-bit Python needs a 64-bit libplcruntime.
"""
import ctypes
import queue
import sys

FRESH = 5  # PLCRUNTIME_FRESH


class Option(ctypes.Structure):
    _fields_ = [("key", ctypes.c_char_p), ("value", ctypes.c_char_p)]


ValueCallback = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int, ctypes.c_void_p)
DoneCallback = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_void_p)


def load(path):
    """The library, with the parameters and results of plcruntime.h that are no plain int."""
    library = ctypes.CDLL(path)
    pointer, text, number = ctypes.c_void_p, ctypes.c_char_p, ctypes.c_double
    library.plcruntime_last_error.restype = text
    library.plcruntime_state_name.restype = text
    library.plcruntime_open.argtypes = [ctypes.POINTER(Option), ctypes.POINTER(pointer)]
    library.plcruntime_subscribe.argtypes = [pointer, text, text, ValueCallback, pointer]
    library.plcruntime_start.argtypes = [pointer]
    library.plcruntime_close.argtypes = [pointer]
    library.plcruntime_write_number.argtypes = [pointer, text, text, number, DoneCallback, pointer]
    library.plcruntime_value_state.argtypes = [pointer]
    library.plcruntime_value_text.argtypes = [pointer]
    library.plcruntime_value_text.restype = text
    library.plcruntime_result_failure.argtypes = [pointer]
    library.plcruntime_result_failure_text.argtypes = [pointer]
    library.plcruntime_result_failure_text.restype = text
    return library


def check(library, status):
    if status < 0:
        raise RuntimeError(library.plcruntime_last_error().decode())
    return status


def main(host="127.0.0.1", port="502", path="libplcruntime.so.0", driver=None):
    library = load(path)
    names = ["temperature", "pump"]  # by the number of the variable
    happened = queue.Queue()  # callbacks come on the runtime's own thread: they take what they need and return

    @ValueCallback
    def changed(_context, variable, value):
        state = library.plcruntime_value_state(value)
        happened.put((names[variable], library.plcruntime_value_text(value).decode(), state))

    @DoneCallback
    def written(_context, result):
        failed = library.plcruntime_result_failure(result)
        happened.put(("write", library.plcruntime_result_failure_text(result).decode(), failed))

    given = [("host", host), ("port", port)] + ([("driver", driver)] if driver else [])
    options = (Option * (len(given) + 1))(*[(key.encode(), value.encode()) for key, value in given])
    runtime = ctypes.c_void_p()
    check(library, library.plcruntime_open(options, ctypes.byref(runtime)))
    try:
        check(library, library.plcruntime_subscribe(runtime, b"9:100", b"float32", changed, None))
        check(library, library.plcruntime_subscribe(runtime, b"2:17", None, changed, None))
        check(library, library.plcruntime_start(runtime))
        check(library, library.plcruntime_write_number(runtime, b"9:100", b"float32", 21.5, written, None))
        waiting = {"write", *names}
        while waiting:
            name, text, number = happened.get()
            if name == "write":
                print("write:", text if number else "confirmed by the controller", flush=True)
                if number:
                    return 1
                waiting.discard(name)
            else:
                print(f"{name} is {text} ({library.plcruntime_state_name(number).decode()})", flush=True)
                if number == FRESH:
                    waiting.discard(name)
    finally:
        library.plcruntime_close(runtime)  # no callback comes after it
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main(*sys.argv[1:]))
    except (OSError, RuntimeError) as error:
        print("python_runtime:", error, file=sys.stderr)
        sys.exit(2)
