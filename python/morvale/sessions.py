"""Sessions of the library, each in a process of its own: the program `morvale`."""
import base64
import functools
import html
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
from typing import Any, Dict, Iterable, List, Optional, Tuple, Union

import numpy as np

from . import recording as _recording

_Path = Union[str, os.PathLike]


class ProgramError(RuntimeError):
    """The program ended without a result. The text is its own last sentence."""


def _program():
    """$MORVALE_PROGRAM, or the program beside this package, or the one on PATH."""
    named = os.environ.get("MORVALE_PROGRAM")
    beside = pathlib.Path(__file__).with_name("morvale")
    found = named or (beside if beside.is_file() else shutil.which("morvale"))
    if not found:
        raise ProgramError("the program morvale is not on PATH; install it, or name it in MORVALE_PROGRAM")
    return str(found)


def _checked(library):
    """The whole path of a library, so that a later replay finds it too."""
    if library is None:
        return None
    path = os.path.abspath(os.fsdecode(library))
    if not os.access(path, os.R_OK) or not os.path.isfile(path):
        raise ValueError(f"library: {path} cannot be read; name a built libmorvale_capture.so")
    if " " in path or ":" in path:  # which end a name for the loader
        raise ValueError(f"library: {path} cannot be loaded from there; give it a path without blanks and colons")
    content = pathlib.Path(path).read_bytes()
    if content[:4] != b"\x7fELF" or b"libmorvale_capture.so" not in content:  # its own name, or that of what it wraps
        raise ValueError(f"library: {path} is no capture library; name a built libmorvale_capture.so")
    return path


def _environment(path):
    """This process's, with the library in front of the program's own."""
    if path is None:
        return None
    others = os.environ.get("LD_PRELOAD")
    return {**os.environ, "LD_PRELOAD": f"{path}:{others}" if others else path}


def _run(*arguments, library=None):
    """Runs `morvale replay`. Returns its lines and its last sentence."""
    try:
        process = subprocess.Popen([_program(), "replay", *map(str, arguments)], stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, env=_environment(library))
    except OSError as error:
        raise ProgramError(f"{_program()} cannot be run: {error.strerror}") from error
    try:
        output, said = process.communicate()
    except BaseException:  # interrupted: the program puts away what it has begun
        process.terminate()
        process.communicate()
        raise
    said, status = said.decode(errors="replace"), process.returncode
    if library and "cannot be preloaded" in said:
        raise ValueError(f"library: {library} is not for this machine")
    words = said.strip().split("\n")[-1].removeprefix("morvale: ")
    # 1: a record is not as recorded, or a frame failed, which the result tells.
    if status not in (0, 1) or (status == 1 and not output and "none" not in arguments):
        raise ProgramError(words or f"the program ended {f'by signal {-status}' if status < 0 else f'with status {status}'}")
    try:
        return [json.loads(line) for line in output.splitlines()], words
    except ValueError:
        raise ProgramError("the program gave no records; are these flags for a replay?") from None


def _records(lines):
    """The lines' records as they lay in memory."""
    def words(value):
        if isinstance(value, dict):
            value = value.values()
        elif not isinstance(value, list):
            return [value & 0xffffffff]
        return [word for part in value for word in words(part)]

    return np.array([words(line["record"]) for line in lines], "<u4").view(_recording.RECORD).reshape(-1)


def _image(png):
    return f'<img style="max-width:100%" src="data:image/png;base64,{base64.b64encode(png).decode()}">'


def _table(rows):
    cells = "".join(f"<tr><th style='text-align:left'>{html.escape(name)}</th><td style='text-align:left'>"
                    f"{html.escape(str(value))}</td></tr>" for name, value in rows)
    return f"<table>{cells}</table>"


class Replay:
    """What the library made of a recording, a video or a folder of pictures; from morvale.replay.

    path        what was replayed
    records     of all frames: an array of morvale.RECORD
    lines       of each frame a dictionary: "personBoxes", "cameraFaces", "geometry", "notes" and the other keys of
                `morvale replay --format json`
    summary     the program's last sentence
    recording   the morvale.Recording that `record` asked for, or None
    """

    path: str
    records: np.ndarray
    lines: List[Dict[str, Any]]
    summary: str
    recording: Optional[_recording.Recording]

    def __init__(self, path, flags, library, lines, summary, recorded):
        self.path, self.lines, self.summary = path, lines, summary
        self._flags, self._library = flags, library
        self.records = _records(lines)
        self.recording = _recording.open(recorded) if recorded else None

    @functools.cached_property
    def changed(self) -> Optional[np.ndarray]:
        """The frames whose record is not the recorded one, in ascending order; None where a recording was not replayed
        frame by frame."""
        try:
            recorded = _recording.open(self.path).records
        except ValueError:
            return None
        if [line["frame"] for line in self.lines] != list(range(len(recorded))):
            return None
        return np.flatnonzero(self.records != recorded)

    def picture(self, frame: int) -> bytes:
        """A frame with label map, boxes and figures, as a PNG: bytes. Replays up to there once more."""
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder, "frame.png")
            until = () if any(flag.startswith("--frames") for flag in self._flags) else ("--frames", frame + 1)
            _run(*self._flags, *until, "--format", "none", "--picture", f"{frame}={file}", "--", self.path,
                 library=self._library)
            return file.read_bytes()

    def __repr__(self):
        return f"<morvale.Replay {self.summary}>"

    def _repr_html_(self):
        shown = int(np.argmax(self.records["humanRatio"]))
        number = self.lines[shown]["frame"]
        rows = [("replay", self.summary), ("frames", len(self.lines)),
                ("person, per cent of the map", f"{self.records['humanRatio'].mean():.1f} on average"),
                ("shown", f"frame {number}, the one with most")]
        try:
            return _image(self.picture(number)) + _table(rows)
        except ProgramError as error:  # no pixels
            return _table([*rows[:-1], ("no picture", error)])


class Analysis:
    """What the library made of one picture; from morvale.analyze.

    path, camera, width, height
    record          the picture's, with the fields of morvale.RECORD
    human_ratio     share of the label map that is person, per cent
    boxes           of persons, (x, y, w, h) in pixels
    camera_faces    of the camera's own detector, likewise
    faces           of the front camera, a dictionary for each measured face: luma (0 to 255), hue (degrees), saturation
                    and value (0 to 255), skin_ratio (per thousand of the map), bright (pixels above 200 and 230)
    notes           where the picture's shape misleads
    frame           a morvale.Frame: the NV21 picture that was analysed, and the network's scores
    labels          uint8 (rows, columns, 5), the label map: morvale.LABELS names the scores
    picture         the annotated picture, a PNG: bytes
    """

    path: str
    camera: str
    width: int
    height: int
    record: np.void
    human_ratio: int
    boxes: List[Tuple[int, int, int, int]]
    camera_faces: List[Tuple[int, int, int, int]]
    faces: List[Dict[str, Any]]
    notes: List[str]
    frame: _recording.Frame
    labels: Optional[np.ndarray]
    picture: bytes

    def __init__(self, path, line, recording, picture):
        def boxes(key):
            return [tuple(box[side] for side in "xywh") for box in line[key]]

        self.path, self.picture, self.frame = path, picture, recording[-1]
        self.record, self.labels = self.frame.record, self.frame.labels
        self.frame.nv21  # read now: the recording goes
        self.frame.scores
        self.camera, self.width, self.height = line["camera"], self.frame.width, self.frame.height
        self.human_ratio = line["record"]["humanRatio"]
        self.boxes, self.camera_faces = boxes("personBoxes"), boxes("cameraFaces")
        self.faces = [self._face(meta) for meta in line["record"]["meta"][:line.get("measuredFaces", 0)]]
        self.notes = line.get("notes", [])

    @staticmethod
    def _face(meta):
        hue, saturation, value = meta["hsv"]
        return {"luma": meta["faceYavg"], "hue": hue, "saturation": saturation, "value": value,
                "skin_ratio": meta["skinRatio"], "bright": tuple(meta["brightCount"])}

    def __repr__(self):
        return (f"<morvale.Analysis {self.path}: {self.camera} camera, {self.human_ratio} % person, "
                f"{len(self.boxes)} boxes>")

    def _repr_html_(self):
        faces = [(f"face {i + 1}", ", ".join(f"{name} {value}" for name, value in face.items()))
                 for i, face in enumerate(self.faces)]
        return _image(self.picture) + _table([("picture", self.path), ("camera", self.camera),
                                              ("person, per cent of the map", self.human_ratio),
                                              ("person boxes", self.boxes), *faces])


def replay(path: _Path, library: Optional[_Path] = None, *, camera: Optional[str] = None, record: Optional[_Path] = None,
           flags: Iterable[str] = ()) -> Replay:
    """Sends a recording's frames, or those of a video or a folder of pictures, through the library, in a process of its
    own. A recording answers for the network itself, and its records must come out as they were recorded.

    library   a built libmorvale_capture.so to replay through in place of the program's own
    camera    "front" or "back" (default: the recording's, else front)
    record    a new folder, or *.morvale file, to record the replay in, label maps included
    flags     more of `morvale replay --help`, as a list of texts: ["--every", "5"]

    Returns a morvale.Replay. Raises morvale.ProgramError, which says what the program said, when nothing could be replayed
    or the program is not there, and ValueError for a library that cannot be used. That a frame failed or a record is not
    as recorded is no error: `summary` says it.
    """
    flags = [*map(str, flags), *(["--camera", camera] if camera else [])]
    extra = ["--record", record] if record else []
    path, library = os.path.abspath(os.fsdecode(path)), _checked(library)
    lines, summary = _run(*flags, *extra, "--format", "json", "--", path, library=library)
    return Replay(path, flags, library, lines, summary, record)


def _ppm(image):
    if image.dtype != np.uint8 or image.ndim != 3 or image.shape[2] != 3:
        raise ValueError(f"image must be uint8 (height, width, 3), red first; it is {image.dtype} {image.shape}")
    return b"P6 %d %d 255\n" % (image.shape[1], image.shape[0]) + image.tobytes()


def analyze(image: Union[_Path, np.ndarray], camera: str = "front", library: Optional[_Path] = None, *,
            flags: Iterable[str] = ()) -> Analysis:
    """Sends one picture through a session of its own, with the workstation's network (docs/network.md), in a process of
    its own.

    image     the path of a photograph or a raw frame (NAME_640x480.nv21), or an array, uint8 (height, width, 3), red first
    camera    "front" or "back": whose analysis
    library   a built libmorvale_capture.so in place of the program's own
    flags     more of `morvale replay --help`: ["--faces", "none"], ["--repeat", "3"]

    Returns a morvale.Analysis. Raises morvale.ProgramError when the picture or the network cannot be used, which says what
    the program said, or the program is not there, and ValueError for an array or a library that cannot be used.
    """
    library = _checked(library)
    with tempfile.TemporaryDirectory() as folder:
        if isinstance(image, np.ndarray):
            name, path = "array", os.path.join(folder, "array.ppm")
            pathlib.Path(path).write_bytes(_ppm(image))
        else:
            name = path = os.fspath(image)
        session, picture = os.path.join(folder, "session"), os.path.join(folder, "picture.png")
        lines, words = _run("--camera", camera, "--record", session, "--picture", f"0={picture}", *flags, "--", path,
                            library=library)
        if not os.path.exists(picture):
            raise ProgramError(words)
        return Analysis(name, lines[-1], _recording.open(session), pathlib.Path(picture).read_bytes())
