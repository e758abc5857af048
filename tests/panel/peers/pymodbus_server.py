# SPDX-License-Identifier: MIT
"""A Modbus TCP server of pymodbus on loopback, for as long as standard input is open.

Prints its port. Then a line "coil ADDRESS" or "word ADDRESS" is answered with the value there, "coil ADDRESS VALUE" or
"word ADDRESS VALUE" sets it and is answered with it.
"""
import asyncio
import sys
import threading

from pymodbus.datastore import ModbusSequentialDataBlock, ModbusServerContext, ModbusSlaveContext
from pymodbus.device import ModbusDeviceIdentification
from pymodbus.server import StartAsyncTcpServer

FUNCTION = {"coil": 1, "word": 3}


def answer(unit, line):
    kind, address, *value = line.split()
    if value:
        unit.setValues(FUNCTION[kind], int(address), [int(value[0])])
    return int(unit.getValues(FUNCTION[kind], int(address), 1)[0])


def talk(unit, loop):
    for line in sys.stdin:
        print(answer(unit, line), flush=True)
    loop.call_soon_threadsafe(loop.stop)


async def serve():
    unit = ModbusSlaveContext(
        co=ModbusSequentialDataBlock(0, [0] * 65536),
        hr=ModbusSequentialDataBlock(0, [0] * 65536),
        zero_mode=True,
    )
    context = ModbusServerContext(slaves=unit, single=True)
    identity = ModbusDeviceIdentification(info_name={"VendorName": "pymodbus", "MajorMinorRevision": "7.8"})
    server = await StartAsyncTcpServer(
        context=context, identity=identity, address=("127.0.0.1", 0), defer_start=True
    )
    task = asyncio.ensure_future(server.serve_forever())
    await server.serving
    print(server.server.sockets[0].getsockname()[1], flush=True)
    threading.Thread(target=talk, args=(unit, asyncio.get_running_loop()), daemon=True).start()
    await task


try:
    asyncio.run(serve())
except RuntimeError:  # the loop was stopped
    pass
