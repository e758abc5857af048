# SPDX-License-Identifier: MIT
"""Measures plcgateway between a simulated controller and a broker; see scripts/gateway-bench."""

import argparse
import contextlib
import json
import os
import pathlib
import shutil
import signal
import socket
import statistics
import struct
import subprocess
import sys
import tempfile
import threading
import time

VARIABLES = 1000


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


def wait_for(port):
    for _ in range(500):
        with contextlib.suppress(OSError):
            socket.create_connection(("127.0.0.1", port)).close()
            return
        time.sleep(0.01)
    sys.exit(f"nobody listens on port {port}")


class Plant:
    """A folder, a broker and a controller of 1,000 registers that may all move."""

    def __init__(self, build, period_ms):
        self.build = build
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="gateway-bench"))
        self.broker_port, self.controller_port = free_port(), free_port()
        self.processes = []
        user = "user root\n" if os.geteuid() == 0 else ""
        config = self.folder / "broker.conf"
        config.write_text(f"listener {self.broker_port} 127.0.0.1\nallow_anonymous true\n"
                          f"max_queued_messages 0\nlog_dest none\n{user}")
        mosquitto = shutil.which("mosquitto", path=os.environ["PATH"] + ":/usr/sbin")
        self.start([mosquitto, "-c", str(config)])
        values = self.folder / "values"
        values.write_text("".join(
            f"unit 1 register {n} counter 0..65535 period {period_ms}\n" for n in range(VARIABLES))
            if period_ms else "unit 1 register 0 0\n")
        self.start([str(build / "plcsim"), "--quiet", "--port", str(self.controller_port), "--load", str(values)])
        self.list = self.folder / "list.csv"
        self.list.write_text("name,area,address,type\n" +
                             "".join(f"variable {n},9,{n},uint16\n" for n in range(VARIABLES)))
        wait_for(self.broker_port)
        wait_for(self.controller_port)

    def start(self, command, **more):
        more.setdefault("stdout", subprocess.DEVNULL)
        process = subprocess.Popen(command, stderr=subprocess.DEVNULL, **more)
        self.processes.append(process)
        return process

    def gateway(self, name, form, poll_ms):
        words = (["--prefix", name] if form == "json" else ["--group", "bench", "--node", name])
        return self.start([str(self.build / "plcgateway"), "--controller", f"127.0.0.1:{self.controller_port}",
                           "--broker", f"127.0.0.1:{self.broker_port}", "--vars", str(self.list),
                           "--state", str(self.folder / name), "--poll", str(poll_ms), "--figures", "1",
                           "--format", form, *words])

    def subscribe(self, topic):
        return self.start(["stdbuf", "-oL", "mosquitto_sub", "-p", str(self.broker_port), "-q", "1", "-t", topic,
                           "-F", "%t\t%p"], stdout=subprocess.PIPE)

    def end(self):
        for process in self.processes:
            process.kill()
            process.wait()
        shutil.rmtree(self.folder)


def processor_seconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def pss_mb(pid):
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Pss:"):
            return int(line.split()[1]) / 1024
    return 0


def rate(build, form, seconds):
    """Values a second and microseconds of processor time for each, all variables changing."""
    plant = Plant(build, 1)
    try:
        gateway = plant.gateway("g", form, 0)
        time.sleep(2)
        before, used, begin = asked(plant)["published"], processor_seconds(gateway.pid), time.monotonic()
        time.sleep(seconds)
        after, used_after, end = asked(plant)["published"], processor_seconds(gateway.pid), time.monotonic()
        values = after - before
        return values / (end - begin), (used_after - used) / values * 1e6
    finally:
        plant.end()


def asked(plant):
    text = subprocess.run([str(plant.build / "plcgateway"), "--status", str(plant.folder / "g") + "/", "--json"],
                          capture_output=True, check=True).stdout
    return json.loads(text)


def reference(build, messages):
    plant = Plant(build, 0)
    try:
        text = subprocess.run([str(build / "bench/mqtt_publisher"), str(plant.broker_port), str(messages)],
                              capture_output=True, check=True).stdout
        per_second, microseconds = text.split()
        return float(per_second), float(microseconds)
    finally:
        plant.end()


def latency(build, poll_ms, rounds):
    """Milliseconds from a write to the controller until the subscriber has the value."""
    plant = Plant(build, 0)
    try:
        plant.gateway("g", "json", poll_ms)
        subscriber = plant.subscribe("g/variable 500")
        heard, came = {}, threading.Condition()

        def listen():
            for line in subscriber.stdout:
                now = time.monotonic()
                value = json.loads(line.split(b"\t", 1)[1])["value"]
                with came:
                    heard[value] = now
                    came.notify_all()

        threading.Thread(target=listen, daemon=True).start()
        controller = socket.create_connection(("127.0.0.1", plant.controller_port))
        with came:
            came.wait_for(lambda: 0 in heard, 10)
        taken = []
        for value in range(1, rounds + 1):
            begin = time.monotonic()
            controller.sendall(struct.pack(">HHHBBHH", value, 0, 6, 1, 6, 500, value))
            controller.recv(100)
            with came:
                if not came.wait_for(lambda: value in heard, 10):
                    sys.exit("a value never came")
            taken.append((heard[value] - begin) * 1000)
            time.sleep(0.003 * (value % 37))  # at any point of a refresh
        return statistics.median(taken), sorted(taken)[int(len(taken) * 0.99)]
    finally:
        plant.end()


def spool(build, seconds):
    """Values that wait, and bytes on disk for each, without a broker."""
    plant = Plant(build, 1)
    try:
        plant.broker_port = free_port()
        plant.gateway("g", "json", 100)
        time.sleep(seconds)
        status = asked(plant)
        return status["waiting"], status["spoolBytes"] / status["waiting"]
    finally:
        plant.end()


def memory(build, instances):
    """Megabytes of one gateway alone, and of all together."""
    plant = Plant(build, 1000)
    try:
        gateways = [plant.gateway("g0", "json", 1000)]
        time.sleep(5)
        alone = pss_mb(gateways[0].pid)
        for number in range(1, instances):
            gateways.append(plant.gateway(f"g{number}", "json", 1000))
        time.sleep(10)
        if any(gateway.poll() is not None for gateway in gateways):
            sys.exit("a gateway has ended")
        return alone, sum(pss_mb(gateway.pid) for gateway in gateways)
    finally:
        plant.end()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--seconds", type=int, default=10)
    parser.add_argument("--instances", type=int, default=50)
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    rows = []
    own_rate, own_cost = reference(options.build, 200000)
    rows.append(("libmosquitto alone, QoS 1, retained", f"{own_rate:.0f} messages/s", f"{own_cost:.1f} µs each", "1"))
    for form in ("json", "sparkplug"):
        values, cost = rate(options.build, form, options.seconds)
        rows.append((f"plcgateway, {form}, 1,000 variables that all change", f"{values:.0f} values/s",
                     f"{cost:.1f} µs each", f"{cost / own_cost:.2f}"))
    for row in rows:
        print("| " + " | ".join(row) + " |")
    for poll_ms in (100, 10):
        median, greatest = latency(options.build, poll_ms, 300)
        print(f"| change to subscriber, --poll {poll_ms} | median {median:.1f} ms | 99th percentile {greatest:.1f} ms | |")
    waiting, each = spool(options.build, options.seconds)
    print(f"| spool, {waiting} values without a broker | {each:.1f} bytes each on disk | | |")
    alone, together = memory(options.build, options.instances)
    print(f"| memory (PSS) of one, 1,000 variables | {alone:.1f} MB | | |")
    print(f"| memory (PSS) of {options.instances} | {together:.0f} MB | {together / options.instances:.1f} MB each | |")


if __name__ == "__main__":
    main()
