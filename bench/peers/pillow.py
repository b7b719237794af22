"""Pillow, asked line by line what Pillow.cpp asks; answers with the processor time it took, or with "no"."""
import io
import sys
import time

from PIL import Image

Image.MAX_IMAGE_PIXELS = None
state = {}


def timed(work):
    start = time.process_time()
    result = work()
    return time.process_time() - start, result


def load():
    image = Image.open(io.BytesIO(state["file"]))
    image.load()
    return image


def identify(path):
    with Image.open(path) as image:
        return "%d %d" % image.size


def pages(path):
    with Image.open(path) as icon:
        return len([entry for entry in icon.ico.entry if entry["width"] > 0])


def answer(request, argument):
    if request == "take":
        with open(argument, "rb") as file:
            state["file"] = file.read()
        return "0"
    if request == "pixels":
        with open(argument, "wb") as file:
            file.write(state.get("made", state["loaded"]).convert("RGBA").tobytes())
        return "0"
    if request == "load":
        state.pop("made", None)
        seconds, state["loaded"] = timed(load)
        return seconds
    if request == "expand":
        seconds, state["made"] = timed(lambda: state["loaded"].convert("RGBA"))
        return seconds
    if request == "reduce":
        seconds, state["made"] = timed(lambda: state["loaded"].quantize(256, dither=Image.Dither.NONE))
        return seconds
    if request in ("bmp", "png"):
        return timed(lambda: state["loaded"].save(argument, request))[0]
    if request in ("identify", "pages"):
        return "%s %s" % timed(lambda: globals()[request](argument))
    return "no"


for line in sys.stdin:
    request, _, argument = line.rstrip("\n").partition(" ")
    try:
        print(answer(request, argument), flush=True)
    except Exception:  # whatever it is, Pillow does not do it
        print("no", flush=True)
