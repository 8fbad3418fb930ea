"""Turns a float TFLite graph into ONNX nodes (opset 11, the newest that OpenCV 4.6 reads whole).

TFLite keeps pictures as rows, columns, channels; ONNX as channels, rows, columns. Every value is kept in the ONNX
order throughout, so that only reshapes that cut through the channel axis need a change of order.
"""

import numpy as np
import onnx
from onnx import TensorProto, helper, numpy_helper

from tflite_model import UnsupportedModel, same_padding

OPSET = 11
TO_CHANNELS_FIRST = [0, 3, 1, 2]
TO_CHANNELS_LAST = [0, 2, 3, 1]
LAST_AXIS_FIRST = [3, 0, 1, 2]


class OnnxGraph:
    """Collects nodes and constants; every method that adds a node returns the name of its result."""

    def __init__(self):
        self._nodes = []
        self._constants = []

    def constant(self, array):
        name = f"constant_{len(self._constants)}"
        self._constants.append(numpy_helper.from_array(np.ascontiguousarray(array), name))
        return name

    def node(self, operation, inputs, output=None, **attributes):
        name = f"{operation}_{len(self._nodes)}"
        self._nodes.append(helper.make_node(operation, inputs, [output or name], name=name, **attributes))
        return output or name

    def resize(self, value, scales, **attributes):
        no_region = self.constant(np.zeros(0, np.float32))
        scales = self.constant(np.array([1, 1, *scales], np.float32))
        return self.node("Resize", [value, no_region, scales], **attributes)

    def model(self, input_name, input_shape, output_name, output_shape):
        graph = helper.make_graph(
            self._nodes, "network",
            [helper.make_tensor_value_info(input_name, TensorProto.FLOAT, input_shape)],
            [helper.make_tensor_value_info(output_name, TensorProto.FLOAT, output_shape)],
            initializer=self._constants)
        model = helper.make_model(graph, opset_imports=[helper.make_opsetid("", OPSET)])
        model.ir_version = 8  # what a reader of opset 11 may expect at most
        onnx.checker.check_model(model)
        return model


def append_tflite(graph, tflite, value):
    """Appends the whole TFLite graph, fed by `value` (channels first); returns the name of its result."""
    appender = _Appender(graph, tflite)
    appender.values[tflite.input] = value
    for operator in tflite.operators:
        appender.append(operator)
    return appender.values[tflite.output]


class _Appender:
    def __init__(self, graph, tflite):
        self.graph = graph
        self.tensors = tflite.tensors
        self.values = {}  # tensor index -> name of the ONNX value
        self._translations = {
            "ADD": lambda op: self._binary("Add", op),
            "MUL": lambda op: self._binary("Mul", op),
            "CONV_2D": self._convolution,
            "DEPTHWISE_CONV_2D": self._convolution,
            "TRANSPOSE_CONV": self._transposed_convolution,
            "RESHAPE": self._reshape,
            "TRANSPOSE": self._transpose,
            "SOFTMAX": self._softmax,
            "SUM": self._sum,
            "RESIZE_BILINEAR": self._resize_bilinear,
            "RESIZE_NEAREST_NEIGHBOR": self._resize_nearest,
        }

    def append(self, operator):
        if operator.name not in self._translations:
            raise UnsupportedModel(f"operator {operator.name} has no translation to ONNX")
        self.values[operator.output] = self._translations[operator.name](operator)

    def _shape(self, index):
        return self.tensors[index].shape

    def _activate(self, value, operator):
        activation = operator.options["activation"]
        if activation == "RELU":
            return self.graph.node("Relu", [value])
        if activation == "RELU6":
            limits = [self.graph.constant(np.float32(limit)) for limit in (0, 6)]
            return self.graph.node("Clip", [value, *limits])
        return value

    def _operand(self, index):
        constant = self.tensors[index].constant
        if constant is None:
            return self.values[index]
        if constant.ndim != 1:
            raise UnsupportedModel(f"a constant operand of {constant.ndim} axes; one value a channel is expected")
        return self.graph.constant(constant.reshape(1, -1, 1, 1))

    def _binary(self, operation, op):
        value = self.graph.node(operation, [self._operand(index) for index in op.inputs])
        return self._activate(value, op)

    def _convolution(self, op):
        source, weights, bias = op.inputs
        if op.options["dilation_w"] != 1 or op.options["dilation_h"] != 1:
            raise UnsupportedModel("a dilated convolution has no translation to ONNX")
        depthwise = op.name == "DEPTHWISE_CONV_2D"
        order = LAST_AXIS_FIRST if depthwise else TO_CHANNELS_FIRST
        kernel = self.tensors[weights].constant.transpose(order)
        _, rows, columns, channels = self._shape(source)
        strides = [op.options["stride_h"], op.options["stride_w"]]
        value, pads = self._pad(self.values[source], (rows, columns), kernel.shape[2:], strides, op)
        value = self.graph.node(
            "Conv", [value, self.graph.constant(kernel), self.graph.constant(self.tensors[bias].constant)],
            kernel_shape=list(kernel.shape[2:]), strides=strides, pads=pads, group=channels if depthwise else 1)
        return self._activate(value, op)

    def _pad(self, value, sizes, kernel, strides, op):
        """Even padding stays with the convolution; uneven padding needs a node of its own."""
        if op.options["padding"] == "VALID":
            return value, [0, 0, 0, 0]
        (top, bottom), (left, right) = (same_padding(*axis) for axis in zip(sizes, kernel, strides))
        if (top, left) == (bottom, right):
            return value, [top, left, bottom, right]
        amounts = self.graph.constant(np.array([0, 0, top, left, 0, 0, bottom, right], np.int64))
        return self.graph.node("Pad", [value, amounts], mode="constant"), [0, 0, 0, 0]

    def _transposed_convolution(self, op):
        _, weights, source, bias = op.inputs
        kernel = self.tensors[weights].constant.transpose(LAST_AXIS_FIRST)
        strides = [op.options["stride_h"], op.options["stride_w"]]
        if list(kernel.shape[2:]) != strides:
            raise UnsupportedModel("a transposed convolution whose kernel and stride differ has no translation")
        value = self.graph.node(
            "ConvTranspose",
            [self.values[source], self.graph.constant(kernel), self.graph.constant(self.tensors[bias].constant)],
            kernel_shape=strides, strides=strides)
        return self._activate(value, op)

    def _reshape(self, op):
        result = self._shape(op.output)
        value = self.graph.node("Transpose", [self.values[op.inputs[0]]], perm=TO_CHANNELS_LAST)
        value = self.graph.node("Reshape", [value, self.graph.constant(np.array(result, np.int64))])
        return self.graph.node("Transpose", [value], perm=TO_CHANNELS_FIRST)

    def _transpose(self, op):
        order = self.tensors[op.inputs[1]].constant
        permutation = [TO_CHANNELS_FIRST.index(int(order[axis])) for axis in TO_CHANNELS_FIRST]
        return self.graph.node("Transpose", [self.values[op.inputs[0]]], perm=permutation)

    def _softmax(self, op):
        if op.options["beta"] != 1:
            raise UnsupportedModel("a softmax with a temperature has no translation to ONNX")
        # Opset 11 flattens everything from the axis on, so the channels must come last.
        value = self.graph.node("Transpose", [self.values[op.inputs[0]]], perm=TO_CHANNELS_LAST)
        value = self.graph.node("Softmax", [value], axis=3)
        return self.graph.node("Transpose", [value], perm=TO_CHANNELS_FIRST)

    def _sum(self, op):
        if not op.options["keep_dims"]:
            raise UnsupportedModel("a sum that drops axes has no translation to ONNX")
        axes = [TO_CHANNELS_FIRST.index(int(axis)) for axis in self.tensors[op.inputs[1]].constant.ravel()]
        return self.graph.node("ReduceSum", [self.values[op.inputs[0]]], axes=axes, keepdims=1)

    def _scales(self, op):
        source, result = self._shape(op.inputs[0]), self._shape(op.output)
        if op.options["align_corners"] or not op.options["half_pixel"]:
            raise UnsupportedModel(f"{op.name} is known with half-pixel centres only")
        if any(result[axis] % source[axis] for axis in (1, 2)):
            raise UnsupportedModel(f"{op.name} is known for whole enlargement factors only")
        return [result[axis] // source[axis] for axis in (1, 2)]

    def _resize_bilinear(self, op):
        return self.graph.resize(self.values[op.inputs[0]], self._scales(op), mode="linear",
                                 coordinate_transformation_mode="half_pixel")

    def _resize_nearest(self, op):
        # For a whole factor the half-pixel rule repeats each pixel, as this simpler mode does.
        return self.graph.resize(self.values[op.inputs[0]], self._scales(op), mode="nearest",
                                 coordinate_transformation_mode="asymmetric", nearest_mode="floor")
