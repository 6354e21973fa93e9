"""MAPISendMail called from Python, each time in a process of its own."""

import ctypes
import os
import tempfile
from ctypes import POINTER, Structure, c_char_p, c_uint32, c_void_p

NOBODY = 65534


class RecipDesc(Structure):
    _fields_ = [("reserved", c_uint32), ("recipClass", c_uint32), ("name", c_char_p), ("address", c_char_p),
                ("entrySize", c_uint32), ("entry", c_void_p)]


class FileDesc(Structure):
    _fields_ = [("reserved", c_uint32), ("flags", c_uint32), ("position", c_uint32), ("path", c_char_p),
                ("name", c_char_p), ("type", c_void_p)]


class Message(Structure):
    _fields_ = [("reserved", c_uint32), ("subject", c_char_p), ("text", c_char_p), ("type", c_char_p),
                ("received", c_char_p), ("conversation", c_char_p), ("flags", c_uint32),
                ("originator", POINTER(RecipDesc)), ("recipCount", c_uint32), ("recips", POINTER(RecipDesc)),
                ("fileCount", c_uint32), ("files", POINTER(FileDesc))]


def message(subject=None, text=None, originator=None, recipients=(), files=()):
    """A record with (name, address) as originator, (class, name, address) as recipients, (path, name) as files."""
    recips = (RecipDesc * len(recipients))(*[RecipDesc(recipClass=c, name=n, address=a) for c, n, a in recipients])
    descs = (FileDesc * len(files))(*[FileDesc(path=p, name=n, position=0xFFFFFFFF) for p, n in files])
    record = Message(subject=subject, text=text, recipCount=len(recips), fileCount=len(descs))
    record.recips = ctypes.cast(recips, POINTER(RecipDesc)) if recipients else None
    record.files = ctypes.cast(descs, POINTER(FileDesc)) if files else None
    if originator:
        record.originator = ctypes.pointer(RecipDesc(name=originator[0], address=originator[1]))
    return record


def entry(library):
    function = library.MAPISendMail
    function.restype = c_uint32
    function.argtypes = [c_void_p, c_void_p, POINTER(Message), c_uint32, c_uint32]
    return function


def send(path, record, prepare=lambda: None):
    """The code that the library at `path` returns for the record, and what it says on standard error."""
    return in_child(lambda: entry(ctypes.CDLL(path))(None, None, record, 0, 0), prepare)


def in_child(work, prepare):
    with tempfile.TemporaryFile() as said:
        child = os.fork()
        if child == 0:
            code = 255
            try:
                os.dup2(said.fileno(), 2)
                prepare()
                code = work()
            finally:
                os._exit(code)
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        said.seek(0)
        return status, said.read().decode()


def drop_root():
    """Makes permissions count: they do not for the superuser."""
    if os.geteuid() == 0:
        os.setegid(NOBODY)
        os.seteuid(NOBODY)
