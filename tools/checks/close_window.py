#!/usr/bin/env python3
"""Asks an X window to close, as the close box of a window manager would: tools/checks/close_window.py WINDOW"""

import ctypes
import sys

x = ctypes.CDLL("libX11.so.6")
for function, result, arguments in (
        ("XOpenDisplay", ctypes.c_void_p, (ctypes.c_char_p,)),
        ("XInternAtom", ctypes.c_ulong, (ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int)),
        ("XSendEvent", ctypes.c_int, (ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_long, ctypes.c_void_p)),
        ("XCloseDisplay", ctypes.c_int, (ctypes.c_void_p,))):
    getattr(x, function).restype = result
    getattr(x, function).argtypes = arguments


class ClientMessage(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("window", ctypes.c_ulong), ("message_type", ctypes.c_ulong),
                ("format", ctypes.c_int), ("data", ctypes.c_long * 5), ("room", ctypes.c_long * 24)]


window = int(sys.argv[1], 0)
display = x.XOpenDisplay(None)
if not display:
    sys.exit("no display")
event = ClientMessage(type=33, window=window, format=32, message_type=x.XInternAtom(display, b"WM_PROTOCOLS", 0))
event.data[0] = x.XInternAtom(display, b"WM_DELETE_WINDOW", 0)
x.XSendEvent(display, window, 0, 0, ctypes.byref(event))
x.XCloseDisplay(display)
