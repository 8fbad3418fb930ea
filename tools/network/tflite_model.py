"""Reads the parts of a float TFLite file that a network conversion needs.

A TFLite file is a FlatBuffer: tables whose fields are found through a per-table directory of 16-bit offsets (slot
numbers below are positions in that directory). Only what a graph of float operators uses is read: tensors with their
shapes and constants, and operators in execution order with their options as plain Python values.
"""

import struct
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np

ACTIVATIONS = {0: None, 1: "RELU", 3: "RELU6"}
PADDINGS = {0: "SAME", 1: "VALID"}
DTYPES = {0: np.dtype("<f4"), 2: np.dtype("<i4"), 4: np.dtype("<i8")}

# Operator code -> (name, options as {attribute: (slot, struct format, default)}).
OPERATORS = {
    0: ("ADD", {"activation": (0, "b", 0)}),
    3: ("CONV_2D", {"padding": (0, "b", 0), "stride_w": (1, "i", 1), "stride_h": (2, "i", 1),
                    "activation": (3, "b", 0), "dilation_w": (4, "i", 1), "dilation_h": (5, "i", 1)}),
    4: ("DEPTHWISE_CONV_2D", {"padding": (0, "b", 0), "stride_w": (1, "i", 1), "stride_h": (2, "i", 1),
                              "activation": (4, "b", 0), "dilation_w": (5, "i", 1), "dilation_h": (6, "i", 1)}),
    18: ("MUL", {"activation": (0, "b", 0)}),
    22: ("RESHAPE", {}),
    23: ("RESIZE_BILINEAR", {"align_corners": (2, "?", False), "half_pixel": (3, "?", False)}),
    25: ("SOFTMAX", {"beta": (0, "f", 1.0)}),
    39: ("TRANSPOSE", {}),
    67: ("TRANSPOSE_CONV", {"padding": (0, "b", 0), "stride_w": (1, "i", 1), "stride_h": (2, "i", 1),
                            "activation": (3, "b", 0)}),
    74: ("SUM", {"keep_dims": (0, "?", False)}),
    97: ("RESIZE_NEAREST_NEIGHBOR", {"align_corners": (0, "?", False), "half_pixel": (1, "?", False)}),
}


class UnsupportedModel(Exception):
    """The file is no TFLite model, or uses something that this reader or the conversion does not know."""


class _Table:
    """One FlatBuffer table; absent fields give their default."""

    def __init__(self, data, position):
        self._data = data
        self._position = position
        self._directory = position - struct.unpack_from("<i", data, position)[0]
        self._directory_size = struct.unpack_from("<H", data, self._directory)[0]

    def _field(self, slot):
        entry = 4 + 2 * slot
        if entry >= self._directory_size:
            return None
        offset = struct.unpack_from("<H", self._data, self._directory + entry)[0]
        return self._position + offset if offset else None

    def _target(self, slot):
        where = self._field(slot)
        return None if where is None else where + struct.unpack_from("<I", self._data, where)[0]

    def scalar(self, slot, form, default=0):
        where = self._field(slot)
        return default if where is None else struct.unpack_from("<" + form, self._data, where)[0]

    def table(self, slot):
        where = self._target(slot)
        return None if where is None else _Table(self._data, where)

    def tables(self, slot):
        where = self._target(slot)
        if where is None:
            return []
        count = struct.unpack_from("<I", self._data, where)[0]
        entries = [where + 4 + 4 * k for k in range(count)]
        return [_Table(self._data, at + struct.unpack_from("<I", self._data, at)[0]) for at in entries]

    def array(self, slot, dtype):
        where = self._target(slot)
        if where is None:
            return np.zeros(0, dtype)
        return np.frombuffer(self._data, dtype, struct.unpack_from("<I", self._data, where)[0], where + 4)


@dataclass
class Tensor:
    shape: list
    constant: np.ndarray  # None for a tensor that the graph computes


@dataclass
class Operator:
    name: str
    inputs: list  # tensor indices
    output: int
    options: dict = field(default_factory=dict)


class TfliteModel:
    """The first graph of a TFLite file: `tensors`, `operators`, and the indices of its one input and one output."""

    def __init__(self, path):
        data = Path(path).read_bytes()
        if data[4:8] != b"TFL3":
            raise UnsupportedModel(f"{path} is not a TFLite file")
        root = _Table(data, struct.unpack_from("<I", data, 0)[0])
        graph = root.tables(2)[0]
        buffers = root.tables(4)
        codes = [max(code.scalar(0, "b"), code.scalar(3, "i")) for code in root.tables(1)]
        self.tensors = [_read_tensor(table, buffers) for table in graph.tables(0)]
        self.operators = [_read_operator(table, codes) for table in graph.tables(3)]
        self.input = _single(graph.array(1, "<i4"), "input")
        self.output = _single(graph.array(2, "<i4"), "output")


def _single(indices, what):
    if len(indices) != 1:
        raise UnsupportedModel(f"the model has {len(indices)} {what} tensors, one is expected")
    return int(indices[0])


def _read_tensor(table, buffers):
    shape = [int(size) for size in table.array(0, "<i4")]
    raw = buffers[table.scalar(2, "I")].array(0, np.uint8)
    if raw.size == 0:
        return Tensor(shape, None)
    kind = table.scalar(1, "b")
    if kind not in DTYPES:
        raise UnsupportedModel(f"a constant has element type {kind}; only float32, int32 and int64 are known")
    return Tensor(shape, np.frombuffer(raw.tobytes(), DTYPES[kind]).reshape(shape))


def _read_operator(table, codes):
    code = codes[table.scalar(0, "I")]
    if code not in OPERATORS:
        raise UnsupportedModel(f"operator code {code} is not known to this conversion")
    name, layout = OPERATORS[code]
    options = table.table(4)
    values = {key: options.scalar(slot, form, default) if options else default
              for key, (slot, form, default) in layout.items()}
    for key, meanings in (("activation", ACTIVATIONS), ("padding", PADDINGS)):
        if key in values:
            if values[key] not in meanings:
                raise UnsupportedModel(f"{name} uses {key} {values[key]}, which is not known")
            values[key] = meanings[values[key]]
    inputs = [int(index) for index in table.array(1, "<i4")]
    return Operator(name, inputs, _single(table.array(2, "<i4"), f"{name} output"), values)


def same_padding(size, kernel, stride):
    """How many zeros SAME padding puts before and after one axis; the odd one goes after."""
    total = max((-(-size // stride) - 1) * stride + kernel - size, 0)
    return total // 2, total - total // 2
