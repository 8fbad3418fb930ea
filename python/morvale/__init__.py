"""Morvale Capture for notebooks: recordings as arrays, sessions of the library, its image kernels.

    import morvale

    recording = morvale.open("session-0001")       # a folder or a packed *.morvale file, whole or thin
    recording.records["meta[0].hsv[0]"]            # a column of all frames; pandas.DataFrame(recording.records)
    recording[57].luma                             # (height, width) of a frame; .chroma, .nv21, .labels, .scores

    replay = morvale.replay("session-0001", library="libmorvale_capture.so")
    replay.changed                                 # the frames whose record is not as it was recorded

    analysis = morvale.analyze("portrait.jpg", camera="front")
    analysis.human_ratio, analysis.faces           # and in a notebook the annotated picture

    rgb = morvale.kernels.nv21_to_rgb(recording[57].nv21, 640, 480)

`help(morvale.open)`, `help(morvale.kernels)` and so on tell more. Replays and analyses run in a process of their own each
(the program `morvale`), so that a notebook may hold many.
"""
from . import kernels
from ._recording import RecordingError
from .recording import LABELS, RECORD, RECORD_BLOCKS, Frame, Recording, open
from .sessions import Analysis, ProgramError, Replay, analyze, replay

__all__ = ["Analysis", "Frame", "LABELS", "ProgramError", "RECORD", "RECORD_BLOCKS", "Recording", "RecordingError",
           "Replay", "analyze", "kernels", "open", "replay"]
