"""Every command of selu once or more, on small inputs, with the names of the files that it writes.

    commands.prepare(selu, folder)                # the inputs
    for command in commands.ALL:
        checks.run([selu, *command.arguments], folder)
"""
import shutil
from dataclasses import dataclass, field

import checks
import specimens


@dataclass
class Command:
    name: str
    arguments: list
    outputs: list = field(default_factory=list)


def command(name, text, *outputs):
    return Command(name, text.split(), list(outputs))


def synth(ending, size="7,6,5"):
    return command(f"synth-{ending}", f"synth noise --size {size} --seed 1 -o out.{ending}", f"out.{ending}")


ALL = [
    command("help", "help walk line"),
    command("info", "info a.nrrd"),
    command("info-json", "info a.tif --format json"),
    synth("nrrd"), synth("mha"), synth("nii"), synth("nii.gz"), synth("tif"), synth("png", "7,6"),
    command("blobs", "synth blobs --size 7,6,5 --seed 1 -o out.nrrd", "out.nrrd"),
    command("layers", "synth layers --size 7,6,5 --seed 1 -o out.nrrd", "out.nrrd"),
    command("fibers", "synth fibers --size 9,9,9 --count 2 --radius 2 --orientation vmf,kappa=20 --seed 1 -o out.tif",
            "out.tif"),
    command("texture", "texture a.nrrd --matrix out.nrrd --picture out.png", "out.nrrd", "out.png"),
    command("texture-ibsi", "texture a.nrrd --mask labels.nrrd --features ibsi --levels 8 --aggregate 3D_avg "
            "--format csv"),
    command("texture-picture", "texture a.nrrd --direction 1,0,0 --symmetric --picture out.svg", "out.svg"),
    command("texture-map", "texture-map a.nrrd --window 3 --levels 8 --features contrast,energy -o out.mha "
            "--picture out.png", "out-contrast.mha", "out-energy.mha", "out.png"),
    command("sample", "sample gamma shape=2 -n 20 --seed 1 -o out.csv --picture out.svg", "out.csv", "out.svg"),
    command("sample-npy", "sample mixture file=mixture.json -n 20 --seed 1 -o out.npy", "out.npy"),
    command("sample-check", "sample normal -n 200 --seed 1 --exact --check --format json"),
    command("walk-line", "walk line 0,0,0 6,5,4 --image a.nrrd --profile -o out.csv --picture out.png",
            "out.csv", "out.png"),
    command("walk-area", "walk area 0,0 6,0 6,5 --format json -o out.json", "out.json"),
    command("walk-polygon", "walk polygon --corners corners.csv --picture out.svg", "out.svg"),
    command("walk-volume", "walk volume --edges 0,0,0 5,0,0 0,5,0 5,0,0 0,0,5 5,0,0"),
    command("walk-solid", "walk solid --mesh part.off --picture out.png", "out.png"),
    command("walk-slice", "walk slice --normal 1,1,1 --distance 6 --image a.nrrd"),
    command("walk-paint", "walk window --low 1,1,1 --high 3,3,3 --image a.nrrd --paint 7 -o out.nii.gz", "out.nii.gz"),
    command("walk-delta", "walk delta 1,2,3 --size 4,4,4"),
    command("walk-direction", "walk direction 1,1,0 --size 4,4,4"),
    command("mask", "mask a.nrrd --axis Z --center 3,3 --radius 2 --value 0 --keep-parameters -o out.tif",
            "out.tif", "out.tif.json"),
    command("regions", "regions labels.nrrd --intensity a.nrrd --levels 8 -o out.json --csv out.csv",
            "out.json", "out.csv"),
    command("feature-image", "feature-image features.json --id-key cell -o out.tif --csv out.csv", "out.tif", "out.csv"),
    command("folder", "walk window --image slices --paint 9 -o out.png.tif", "out.png.tif"),
]


def prepare(selu, folder):
    """Writes the inputs into a folder."""
    def make(*arguments):
        run = checks.run([selu, *arguments], folder)
        if run.code != 0:
            checks.stop(f"{' '.join(arguments)}: {run.error.decode()}")
    make("synth", "noise", "--size", "7,6,5", "--seed", "3", "-o", "a.nrrd")
    make("synth", "noise", "--size", "7,6,5", "--seed", "3", "-o", "a.tif")
    make("synth", "fibers", "--size", "7,6,5", "--count", "1", "--seed", "3", "-o", "labels.nrrd")
    (folder / "slices").mkdir()
    for number in (1, 2):
        (folder / "slices" / f"{number}.png").write_bytes(specimens.PNG8)
    (folder / "part.off").write_bytes(specimens.OFF)
    (folder / "mixture.json").write_bytes(specimens.MIXTURE)
    (folder / "features.json").write_bytes(specimens.FEATURES)
    (folder / "corners.csv").write_text("x,y\n0,0\n6,0\n6,5\n")


class Stage:
    """The inputs, once made; a copy of them for each run, and what each command writes undisturbed."""

    def __init__(self, selu, template, names=None):
        self.selu, self.template = selu, template
        prepare(selu, template)
        self.commands = [one for one in ALL if not names or one.name in names]
        self.inputs = names_in(template)
        self.expected = {}
        for one in self.commands:
            with checks.Folder(template, one.name) as folder:
                self.fill(folder.path)
                run = checks.run([selu, *one.arguments], folder.path / "in")
                if run.code != 0:
                    checks.stop(f"{one.name}: {run.error.decode()}")
                written = contents(folder.path / "in", one.outputs)
                if None in written:
                    checks.stop(f"{one.name} does not write {one.outputs}")
                self.expected[one.name] = (run.out, written)

    def fill(self, path):
        """The inputs in `in`, and a folder for temporaries in `tmp`."""
        shutil.copytree(self.template, path / "in")
        (path / "tmp").mkdir()

    def debris(self, path, one):
        """Files that are neither inputs nor outputs."""
        return sorted((names_in(path / "in") - self.inputs - set(one.outputs)) | names_in(path / "tmp"))


def names_in(folder):
    return {path.name for path in folder.iterdir()}


def contents(folder, names):
    return [(folder / name).read_bytes() if (folder / name).exists() else None for name in names]
