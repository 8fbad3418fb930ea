"""Recordings as arrays."""
import functools
import os
from typing import Iterator, List, Optional, Tuple, Union, overload

import numpy as np

from . import _recording

#: What the five scores of a label-map cell are of: `LABELS[labels.argmax(2)[row, column]]`.
LABELS = ("background", "hair", "face skin", "other face parts", "body")

_CHANNELS = [("brightCount", "<u4", 2), ("faceYavg", "<i4"), ("hsvMin", "<i4", 3), ("hsv", "<i4", 3),
             ("skinRatio", "<i4"), ("box", "<i4", 4)]

#: The record of a frame, 288 bytes, with its blocks as arrays: `records.view(RECORD_BLOCKS)["meta"]["hsv"]` is
#: (frames, 5, 3).
RECORD_BLOCKS = np.dtype([("ver", "<i4"), ("humanRatio", "<i4"), ("meta", _CHANNELS, 5)])


def _words(name, dtype):
    """Every 32-bit word of a dtype by its name in C++."""
    if dtype.subdtype:
        element, (count,) = dtype.subdtype
        return [word for i in range(count) for word in _words(f"{name}[{i}]", element)]
    if dtype.names:
        return [word for field in dtype.names for word in _words(f"{name}.{field}" if name else field, dtype[field])]
    return [(name, dtype)]


#: The same with a number for each of its 72 words, by the names that `morvale inspect --offsets` explains: "ver",
#: "humanRatio", "meta[0].faceYavg", "meta[0].hsv[0]" ... pandas takes an array of these as it is.
RECORD = np.dtype(_words("", RECORD_BLOCKS))

_FRONT_CAMERA = 16


class Frame:
    """One frame of a recording. What the recording does not hold is None.

    width, height   pixels
    stride          bytes from one row to the next as the caller stated it; 0 means width
    camera          "front" or "back": whose analysis it had
    gate_level      above 25 the frame was not analysed
    faces           of the camera's own detector, (x, y, w, h) in pixels
    qerm_hint, is_udc   the caller's
    process         what the library returned: 0 or -1
    execute         what the network returned, or None where it was not asked
    network_ms      how long the network took
    is_thin         only the pixels that the library reads were recorded; others are those beside them
    record          the frame's record, with the fields of RECORD
    """

    index: int
    record: np.void
    camera: str
    width: int
    height: int
    stride: int
    gate_level: float
    faces: List[Tuple[int, int, int, int]]
    qerm_hint: int
    is_udc: bool
    process: int
    execute: Optional[int]
    network_ms: Optional[float]
    is_thin: bool

    def __init__(self, reader: _recording.Reader, index: int, record: np.void):
        self._reader, self.index, self.record = reader, index, record
        facts = reader.frame(index)
        self.camera = "front" if facts.pop("camera_type") == _FRONT_CAMERA else "back"
        self._has_pixels = facts.pop("has_pixels")
        self._columns = reader.info()["net_size"]
        vars(self).update(facts)

    @functools.cached_property
    def _pixels(self):
        """Luma and chroma in one block, and where the chroma begins."""
        return self._reader.pixels(self.index) if self._has_pixels else (None, 0)

    @property
    def luma(self) -> Optional[np.ndarray]:
        """uint8 (height, width): the rows as the library reads them, `width` bytes apart whatever the stride."""
        block, _ = self._pixels
        return None if block is None else block[:self.width * self.height].reshape(self.height, self.width)

    @property
    def chroma(self) -> Optional[np.ndarray]:
        """uint8 (height // 2, width): rows of V, U pairs, `width` bytes apart."""
        block, start = self._pixels
        rows = self.height // 2
        return None if block is None else block[start:start + rows * self.width].reshape(rows, self.width)

    @functools.cached_property
    def nv21(self) -> Optional[np.ndarray]:
        """uint8 (height + height // 2, width): luma and chroma as morvale.kernels takes them; an odd height wants the
        last row of chroma once more. No copy where the chroma lies behind packed rows."""
        luma, chroma = self.luma, self.chroma
        if luma is None or chroma is None:
            return None
        block, start = self._pixels
        if start == luma.size:
            return block[:start + chroma.size].reshape(-1, self.width)
        return np.concatenate([luma, chroma])

    @functools.cached_property
    def _output(self):
        return self._reader.output(self.index)

    @property
    def labels(self) -> Optional[np.ndarray]:
        """uint8 (rows, columns, 5): the label map that the analysis read, five score bytes a cell, smoothed over time;
        LABELS names them."""
        labels = self._output[0]
        return None if labels is None else labels.reshape(-1, self._columns, len(LABELS))

    @property
    def scores(self) -> Optional[np.ndarray]:
        """float32 (rows, columns, 5): the network's answer."""
        scores = self._output[1]
        return None if scores is None else scores.reshape(self._columns, self._columns, len(LABELS))

    def __repr__(self):
        return f"<morvale.Frame {self.index}: {self.width}x{self.height}, {self.camera} camera>"


class Recording:
    """A recorded session, from morvale.open. `len(recording)`, `recording[57]`, `for frame in recording`: morvale.Frame.

    path            as it was given
    camera          "front" or "back"
    pad_size, net_size   sides of the network's input (pixels) and output (cells)
    open_result     what opening the model gave: 0 is well, -1: no model was loaded
    debug_level     the library's; from 1 on it drew into the frames
    made_by, library     who recorded it, and which library; text
    warning         a sentence where the recording broke off, else empty
    records         of all frames: an array of RECORD, which pandas.DataFrame takes as it is
    """

    path: str
    camera: str
    records: np.ndarray
    pad_size: int
    net_size: int
    open_result: int
    debug_level: int
    made_by: str
    library: str
    warning: str

    def __init__(self, path: Union[str, os.PathLike]):
        self.path = os.fspath(path)
        self._reader = _recording.Reader(os.fsencode(self.path))
        facts = self._reader.info()
        self.camera = "front" if facts.pop("camera_type") == _FRONT_CAMERA else "back"
        vars(self).update(facts)
        self.records = np.frombuffer(self._reader.records(), RECORD)

    def __len__(self) -> int:
        return len(self._reader)

    @overload
    def __getitem__(self, index: int) -> Frame: ...
    @overload
    def __getitem__(self, index: slice) -> List[Frame]: ...
    def __getitem__(self, index):
        if isinstance(index, slice):
            return [self[i] for i in range(*index.indices(len(self)))]
        if not -len(self) <= index < len(self):
            raise IndexError(f"{self.path}: there is no frame {index} among {len(self)}")
        index %= len(self)
        return Frame(self._reader, index, self.records[index])

    def __iter__(self) -> Iterator[Frame]:
        return (self[i] for i in range(len(self)))

    def __repr__(self):
        return f"<morvale.Recording {self.path}: {len(self)} frames, {self.camera} camera>"


def open(path: Union[str, os.PathLike]) -> Recording:
    """Opens a recording: a folder with session.json or a packed *.morvale file, with whole or thin frames.

    Returns a morvale.Recording. Everything but pixels, label maps and scores is read and checked now; these when they
    are asked for, and held to their hashes. Raises morvale.RecordingError, a ValueError, which names file and frame.
    """
    return Recording(path)
