#!/usr/bin/python3
"""What a call of morvale.kernels costs beside its kernel: calls on pictures of so few pixels that nothing else takes time.

    PYTHONPATH=build/release/python bench/python_calls.py
"""
import time
import timeit

import numpy as np

from morvale import kernels

CALLS, ROUNDS = 20000, 15

plane, frame, colours = np.zeros((2, 2), np.uint8), np.zeros((3, 2), np.uint8), np.zeros((2, 2, 3), np.uint8)
weights = kernels.gaussian_weights(1, 1)
CASES = {
    "nv21_to_rgb": lambda: kernels.nv21_to_rgb(frame, 2, 2),
    "nv21_to_rgb, out": lambda: kernels.nv21_to_rgb(frame, 2, 2, out=colours),
    "nv21_to_rgb_padded": lambda: kernels.nv21_to_rgb_padded(frame, 2, 2, right_margin=0),
    "rgb_to_nv21": lambda: kernels.rgb_to_nv21(colours),
    "resize_nv21": lambda: kernels.resize_nv21(frame, 2, 2, 2, 2),
    "resize_y_2x_up": lambda: kernels.resize_y_2x_up(plane),
    "resize_y_8x_up_rr_hori": lambda: kernels.resize_y_8x_up_rr_hori(plane),
    "gaussian_blur_grid_hori": lambda: kernels.gaussian_blur_grid_hori(plane, weights),
}

print("microseconds of processor time a call: the least and the median of", ROUNDS, "rounds of", CALLS)
for name, call in CASES.items():
    rounds = sorted(seconds / CALLS * 1e6 for seconds in timeit.repeat(call, number=CALLS, repeat=ROUNDS, timer=time.process_time))
    print(f"{name:24} {rounds[0]:5.2f} {rounds[ROUNDS // 2]:5.2f}")
