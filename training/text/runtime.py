"""ONNX Runtime, by its C interface: runs the networks as the library does."""

import ctypes
import os
import time
from pathlib import Path

import numpy as np

# Where tools/setup puts the library, unless the environment names another folder.
_FOLDER = os.environ.get("KESTRELID_RESOURCES", Path(__file__).resolve().parents[2] / ".deps" / "resources")
_LEVEL = 12  # of the interface, which every later runtime still speaks; the networks need its operators
_NEWEST = 40  # minor version to look for: Debian names the library after it
# Places in the table of functions: it only ever grows at its end.
_PLACES = {
    "GetErrorMessage": 2, "CreateEnv": 3, "CreateSession": 7, "Run": 9, "CreateSessionOptions": 10,
    "SetIntraOpNumThreads": 24, "SessionGetInputCount": 30, "SessionGetOutputCount": 31, "SessionGetInputName": 36,
    "SessionGetOutputName": 37, "CreateTensorWithDataAsOrtValue": 49, "GetTensorMutableData": 51,
    "GetTensorElementType": 60, "GetDimensionsCount": 61, "GetDimensions": 62, "GetTensorTypeAndShape": 65,
    "CreateCpuMemoryInfo": 69, "GetAllocatorWithDefaultOptions": 78, "ReleaseStatus": 93, "ReleaseMemoryInfo": 94,
    "ReleaseSession": 95, "ReleaseValue": 96, "ReleaseTensorTypeAndShapeInfo": 99, "ReleaseSessionOptions": 100,
    "AddSessionConfigEntry": 130}
# As OnnxSession.cpp: turns of layout stay where a network has them.
_AS_WRITTEN = (b"optimization.disable_specified_optimizers",
               b"QDQPropagationTransformer;TransposeOptimizer;TransposeOptimizer_CPUExecutionProvider")
_FLOAT = 1  # ONNX_TENSOR_ELEMENT_DATA_TYPE_FLOAT
_TYPES = {_FLOAT: np.float32, 2: np.uint8, 3: np.int8, 6: np.int32, 7: np.int64}


class MissingRuntime(SystemExit):
    """There is no ONNX Runtime here."""


class _Base(ctypes.Structure):
    _fields_ = [("table", ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.c_uint32)),
                ("version", ctypes.CFUNCTYPE(ctypes.c_char_p))]


def _library():
    name = "libonnxruntime.so"
    names = [Path(_FOLDER, name), f"{name}.1", name]
    reason = None
    for candidate in names + [f"{name}.1.{minor}" for minor in range(_NEWEST, _LEVEL - 1, -1)]:
        try:
            return ctypes.CDLL(str(candidate))
        except OSError as error:
            refusal = str(error) if candidate == names[0] and names[0].exists() else f"{names[0]} is not there"
            reason = reason or refusal
    raise MissingRuntime(f"no ONNX Runtime ({reason}, and the system has none): run tools/setup, or set "
                         "KESTRELID_RESOURCES to the folder that has it")


class _Interface:
    """The functions, each as a call that fails with the runtime's words; and the process's one environment."""

    def __init__(self):
        library = _library()
        library.OrtGetApiBase.restype = ctypes.POINTER(_Base)
        table = library.OrtGetApiBase().contents.table(_LEVEL)
        if not table:
            raise MissingRuntime(f"{library._name}: too old, needs ONNX Runtime 1.{_LEVEL}")
        self._pointers = ctypes.cast(table, ctypes.POINTER(ctypes.c_void_p))
        fatal = 4  # what goes wrong comes back as a status
        self.environment = self.made("CreateEnv", fatal, b"kestrelid")

    def function(self, name, answer=ctypes.c_void_p):
        # Whole numbers go as 64 bits, which fits every parameter of the calls made here.
        pointer = self._pointers[_PLACES[name]]
        return lambda *given: ctypes.CFUNCTYPE(answer, *map(_kind, given))(pointer)(*given)

    def call(self, name, *given):
        status = self.function(name)(*given)
        if status:
            message = self.function("GetErrorMessage", ctypes.c_char_p)(ctypes.c_void_p(status)).decode()
            self.release("Status", ctypes.c_void_p(status))
            raise RuntimeError(" ".join(message.split()))

    def made(self, name, *given, kind=ctypes.c_void_p):
        """What a call writes to the place its last parameter points to."""
        place = kind()
        self.call(name, *given, ctypes.byref(place))
        return place if kind is ctypes.c_void_p else place.value

    def release(self, what, handle):
        self.function(f"Release{what}", None)(handle)


def _kind(value):
    if isinstance(value, bytes):
        return ctypes.c_char_p
    return ctypes.c_int64 if isinstance(value, int) else ctypes.c_void_p


class Session:
    """A model, loaded. threads: those that share one run."""

    _interface = _handle = None

    def __init__(self, path, threads=1):
        if Session._interface is None:
            Session._interface = _Interface()
        api = self._interface
        if not Path(path).is_file():
            raise SystemExit(f"{path}: no such file")
        options = api.made("CreateSessionOptions")
        try:
            api.call("SetIntraOpNumThreads", options, threads)
            api.call("AddSessionConfigEntry", options, *_AS_WRITTEN)
            self._handle = api.made("CreateSession", api.environment, os.fsencode(path), options)
        except RuntimeError as error:
            raise SystemExit(f"{path}: {error}") from error
        finally:
            api.release("SessionOptions", options)
        self.seconds = 0.0  # of processor time, all threads together, that the last run took
        self._inputs, self.outputs = self._names("Input"), self._names("Output")

    def _names(self, which):
        api = self._interface
        allocator = api.made("GetAllocatorWithDefaultOptions")
        count = api.made(f"SessionGet{which}Count", self._handle, kind=ctypes.c_size_t)
        # The runtime allocates a few bytes for each name; they live as long as the process.
        return [ctypes.cast(api.made(f"SessionGet{which}Name", self._handle, index, allocator),
                            ctypes.c_char_p).value.decode() for index in range(count)]

    def run(self, x):
        """The outputs, as arrays, for the one input x."""
        api, x = self._interface, np.ascontiguousarray(x, np.float32)
        device, default = 0, 0
        memory = api.made("CreateCpuMemoryInfo", device, default)
        shape = (ctypes.c_int64 * x.ndim)(*x.shape)
        values = (ctypes.c_void_p * len(self.outputs))()
        given = None
        try:
            given = api.made("CreateTensorWithDataAsOrtValue", memory, x.ctypes.data_as(ctypes.c_void_p), x.nbytes,
                             shape, x.ndim, _FLOAT)
            began = time.process_time()
            api.call("Run", self._handle, None, _strings(self._inputs), ctypes.byref(given), 1,
                     _strings(self.outputs), len(self.outputs), values)
            self.seconds = time.process_time() - began
            return [self._array(ctypes.c_void_p(value)) for value in values]
        finally:
            api.release("MemoryInfo", memory)
            for value in filter(None, [given, *map(ctypes.c_void_p, values)]):
                api.release("Value", value)

    def _array(self, value):
        api = self._interface
        info = api.made("GetTensorTypeAndShape", value)
        kind = _TYPES[api.made("GetTensorElementType", info, kind=ctypes.c_int)]
        shape = (ctypes.c_int64 * api.made("GetDimensionsCount", info, kind=ctypes.c_size_t))()
        api.call("GetDimensions", info, shape, len(shape))
        api.release("TensorTypeAndShapeInfo", info)
        size = int(np.prod(shape)) * np.dtype(kind).itemsize
        data = ctypes.string_at(api.made("GetTensorMutableData", value), size)
        return np.frombuffer(data, kind).reshape(tuple(shape)).copy()

    def __del__(self):
        if self._handle:
            self._interface.release("Session", self._handle)


def _strings(names):
    return (ctypes.c_char_p * len(names))(*map(str.encode, names))
