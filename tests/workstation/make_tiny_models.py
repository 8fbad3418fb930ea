"""Writes the small ONNX models of runtime_test: one that fits the runtime, and ones that differ in one point each.

usage: make_tiny_models.py FOLDER
"""

import sys
from pathlib import Path

import numpy as np
import onnx
from onnx import TensorProto, helper, numpy_helper

INPUT, OUTPUT = "MobilenetV2/MobilenetV2/input:0", "logits/semantic/BiasAdd:0"


def save(path, input_shape=(1, 128, 128, 3), cell=4, labels=5, input_name=INPUT, output_name=OUTPUT,
         declared_cell=None):
    """Averages cells of the picture; label k gets (k + 1) times red plus k."""
    weights = np.zeros((labels, 3, 1, 1), np.float32)
    weights[:, 0, 0, 0] = np.arange(1, labels + 1)
    bias = np.arange(labels, dtype=np.float32)
    nodes = [
        helper.make_node("Transpose", [input_name], ["picture"], perm=[0, 3, 1, 2]),
        helper.make_node("AveragePool", ["picture"], ["cells"], kernel_shape=[cell, cell], strides=[cell, cell]),
        helper.make_node("Conv", ["cells", "weights", "bias"], ["scores"], kernel_shape=[1, 1]),
        helper.make_node("Transpose", ["scores"], [output_name], perm=[0, 2, 3, 1]),
    ]
    output_cell = declared_cell or cell
    output_shape = [1, input_shape[1] // output_cell, input_shape[2] // output_cell, labels]
    graph = helper.make_graph(
        nodes, "tiny",
        [helper.make_tensor_value_info(input_name, TensorProto.FLOAT, input_shape)],
        [helper.make_tensor_value_info(output_name, TensorProto.FLOAT, output_shape)],
        initializer=[numpy_helper.from_array(weights, "weights"), numpy_helper.from_array(bias, "bias")])
    model = helper.make_model(graph, opset_imports=[helper.make_opsetid("", 11)])
    model.ir_version = 8
    onnx.checker.check_model(model)
    onnx.save(model, str(path))


def main(folder):
    folder.mkdir(parents=True, exist_ok=True)
    save(folder / "oblong_input.onnx", input_shape=(1, 128, 256, 3))
    save(folder / "batch_of_two.onnx", input_shape=(2, 128, 128, 3))
    save(folder / "small.onnx", input_shape=(1, 8, 8, 3))
    save(folder / "named_256_wrongly.onnx")
    save(folder / "giant.onnx", input_shape=(1, 33920, 33920, 3))  # one run takes 13.8 GB
    save(folder / "coarse_output.onnx", cell=8)
    save(folder / "six_labels.onnx", labels=6)
    save(folder / "input_name.onnx", input_name="picture:0")
    save(folder / "output_name.onnx", output_name="scores:0")
    save(folder / "untrue_output.onnx", cell=8, declared_cell=4)
    (folder / "garbage.onnx").write_bytes(b"no model at all\n" * 100)
    with open(folder / "longest.onnx", "wb") as sparse:
        sparse.truncate((256 << 20) + 1)
    save(folder / "whole.onnx")
    (folder / "cut_off.onnx").write_bytes((folder / "whole.onnx").read_bytes()[:300])
    (folder / "whole.onnx").rename(folder / "good.onnx")  # last: the build takes it as the sign that all are there


main(Path(sys.argv[1]))
