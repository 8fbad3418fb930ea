"""Wraps the person-parsing network in the shape that the core expects of its front and back models.

usage: product_network.py MODEL.tflite FOLDER

Writes one ONNX file per camera into FOLDER, under the file name that the core asks for. Both take a square picture of
1 x S x S x 3 values in -1..1 and give 1 x S/4 x S/4 x 5 scores. docs/network.md explains the labels and the scale.
"""

import os
import sys
from pathlib import Path

import numpy as np
import onnx

from onnx_graph import TO_CHANNELS_FIRST, TO_CHANNELS_LAST, OnnxGraph, append_tflite
from tflite_model import TfliteModel, UnsupportedModel

INPUT_NAME = "MobilenetV2/MobilenetV2/input:0"
OUTPUT_NAME = "logits/semantic/BiasAdd:0"
MODELS = {
    256: "PhotoParsing5_AWB_FACE_256_DSP_iter_495623_v2.0_q.onnx",
    128: "PhotoParsing5_AF_FACE_128_DSP_iter_300000_v2.0_q.onnx",
}

NETWORK_SIDE = 256
BACKGROUND, HAIR, BODY_SKIN, FACE_SKIN, CLOTHES, OTHERS = range(6)  # the network's classes
LABELS = 5

# A label's score is the largest of its classes' scores. Label 3, the other parts of a face, has no class here.
CLASSES_OF_LABEL = [[BACKGROUND], [HAIR], [FACE_SKIN], [], [BODY_SKIN, CLOTHES, OTHERS]]

# The core turns scores of -10..10 into bytes and takes a face pixel's word from byte 200 (score 5.7) on. The network's
# own scores end at 3.7: this factor brings a sure face there and keeps the highest score below byte 255, where ties
# would begin.
SCORE_SCALE = 2.5
NEVER_WINS = -10.0


def label_mixes():
    """1x1 convolutions (weights, bias) from classes to labels whose element-wise maximum gives the label scores.

    The k-th one picks the k-th class of every label; a label with fewer classes repeats its last one.
    """
    mixes = []
    for k in range(max(len(classes) for classes in CLASSES_OF_LABEL)):
        weights = np.zeros((LABELS, 6, 1, 1), np.float32)
        bias = np.zeros(LABELS, np.float32)
        for label, classes in enumerate(CLASSES_OF_LABEL):
            if classes:
                weights[label, classes[min(k, len(classes) - 1)]] = SCORE_SCALE
            else:
                bias[label] = NEVER_WINS
        mixes.append((weights, bias))
    return mixes


def build_model(tflite, side):
    """The whole network for pictures of side x side pixels."""
    graph = OnnxGraph()
    scores = append_tflite(graph, tflite, _network_input(graph, side))
    _label_scores(graph, scores, side)
    return graph.model(INPUT_NAME, [1, side, side, 3], OUTPUT_NAME, [1, side // 4, side // 4, LABELS])


def _network_input(graph, side):
    """-1..1, rows x columns x channels, to 0..1, channels first, at the network's own side."""
    half = graph.constant(np.full((1, 1, 1, 1), 0.5, np.float32))
    value = graph.node("Transpose", [INPUT_NAME], perm=TO_CHANNELS_FIRST)
    value = graph.node("Mul", [value, half])
    value = graph.node("Add", [value, half])
    if side == NETWORK_SIDE:
        return value
    factor = NETWORK_SIDE // side
    return graph.resize(value, [factor, factor], mode="linear", coordinate_transformation_mode="half_pixel")


def _label_scores(graph, scores, side):
    """Averages the class scores of each cell, then takes the largest of each label's classes."""
    cell = NETWORK_SIDE // (side // 4)
    value = graph.node("AveragePool", [scores], kernel_shape=[cell, cell], strides=[cell, cell])
    choices = [graph.node("Conv", [value, graph.constant(weights), graph.constant(bias)], kernel_shape=[1, 1])
               for weights, bias in label_mixes()]
    graph.node("Transpose", [graph.node("Max", choices)], output=OUTPUT_NAME, perm=TO_CHANNELS_LAST)


def write_models(tflite_path, folder):
    tflite = TfliteModel(tflite_path)
    shape = tflite.tensors[tflite.input].shape, tflite.tensors[tflite.output].shape
    if shape != ([1, NETWORK_SIDE, NETWORK_SIDE, 3], [1, NETWORK_SIDE, NETWORK_SIDE, 6]):
        raise UnsupportedModel(f"{tflite_path} maps {shape[0]} to {shape[1]}, not a 256 x 256 picture to six classes")
    for side, name in MODELS.items():
        unfinished = Path(folder) / f"{name}.{os.getpid()}.tmp"
        try:
            onnx.save(build_model(tflite, side), str(unfinished))
            unfinished.replace(Path(folder) / name)
        finally:
            unfinished.unlink(missing_ok=True)


def main(arguments):
    if len(arguments) != 2:
        sys.exit(__doc__.strip().splitlines()[2])
    try:
        write_models(*arguments)
    except (OSError, UnsupportedModel) as error:
        sys.exit(f"product_network.py: {error}")


if __name__ == "__main__":
    main(sys.argv[1:])
