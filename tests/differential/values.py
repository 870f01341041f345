"""Value maps and tables against dictionaries of Python's."""
import struct

from seluutils import features

from common import expect

WORDS = ("a", "b", "volume", "Zeta", "ä", "object 2", "no. of voxels", "status", "object", "id", "")


def key_order(key):
    """Numbers by value, then texts by their bytes."""
    return (0, key, b"") if isinstance(key, int) else (1, 0, key.encode())


def leaf(chance):
    return chance.choice((True, False, chance.randint(-2**31, 2**31 - 1), chance.uniform(-9, 9), chance.choice(WORDS)))


def tree(chance, depth):
    kind = chance.random()
    if depth == 0 or kind < 0.5:
        return leaf(chance)
    if kind < 0.65:
        return [tree(chance, depth - 1) for _ in range(chance.randint(0, 3))]
    return branch(chance, depth - 1)


def branch(chance, depth):
    keys = [chance.choice([word for word in WORDS if word]) if chance.random() < 0.8 else chance.randint(-3, 12)
            for _ in range(chance.randint(0, 4))]
    return {key: tree(chance, depth) for key in keys}


def leaves(value, path=()):
    """(path, value) in the order of the keys."""
    if isinstance(value, dict):
        for key in sorted(value, key=key_order):
            yield from leaves(value[key], (*path, str(key)))
    elif isinstance(value, list):
        for k, entry in enumerate(value):
            yield from leaves(entry, (*path, str(k)))
    else:
        yield "/".join(path), value


def is_excluded(path, excluded):
    return any(path == other or path.startswith(other + "/") for other in excluded)


def is_number(value):
    return isinstance(value, (bool, int, float))


def f32(number):
    return struct.unpack("f", struct.pack("f", number))[0]


def case(chance):
    return chance.choice((case_paths, case_mean, case_image, case_object_map))(chance)


def case_paths(chance):
    values = branch(chance, 3)
    everything = [path for path, _ in leaves(values)]
    excluded = chance.sample(everything, min(len(everything), chance.choice((0, 0, 1, 2))))
    if chance.random() < 0.3 and values:
        excluded.append(str(chance.choice(list(values))))
    kind = chance.choice(("numbers", "numbers and texts", "all"))
    wanted = [path for path, value in leaves(values)
              if not is_excluded(path, excluded) and (kind != "numbers" or is_number(value))]
    expect(features.paths(values, kind=kind, excluded=excluded), wanted, f"{kind} of {values} but {excluded}")


def read(values, path):
    """The number at a path, 0 where there is none."""
    for part in path.split("/"):
        if isinstance(values, list):
            values = values[int(part)] if part.isdigit() and int(part) < len(values) else None
        elif isinstance(values, dict):
            values = values.get(part)
        else:
            return 0.0
    return float(values) if is_number(values) else 0.0


def flat(chance, names):
    values = {}
    for name in names:
        if chance.random() < 0.8:
            values[name] = leaf(chance)
        elif chance.random() < 0.5:
            values[name] = {"p": leaf(chance), "q": [leaf(chance), leaf(chance)]}
    return values


def nested(values):
    """Sums as the map of paths has them: lists become maps by number."""
    result = {}
    for path, value in values.items():
        at = result
        *parents, last = path.split("/")
        for part in parents:
            at = at.setdefault(part, {})
        at[last] = value
    return result


def case_mean(chance):
    names = ("a", "b", "c", "d")
    maps = [flat(chance, names) for _ in range(chance.randint(1, 4))]
    excluded = chance.sample(("a", "b/q", "c/p", "nothing"), chance.choice((0, 0, 1, 2)))
    sums = {path: float(value) for path, value in leaves(maps[0]) if is_number(value) and not is_excluded(path, excluded)}
    for other in maps[1:]:
        for path in sums:
            sums[path] += read(other, path)
    wanted = nested({path: total / len(maps) for path, total in sums.items()})
    given = features.mean(maps, excluded=excluded)
    expect(dict(leaves(given)), dict(leaves(wanted)), f"mean of {maps} but {excluded}")


def case_image(chance):
    word = chance.choice(("object", "cell", "Fiber x"))
    greatest = chance.choice((1, 5, 9, 10, 120))
    labels = sorted(chance.sample(range(1, greatest + 1), chance.randint(1, min(5, greatest))))
    digits = len(str(greatest))
    kinds = {name: chance.choice((bool, int, float, str)) for name in ("volume", "x", "name", "flag")}
    make = {bool: lambda: chance.random() < 0.5, int: lambda: chance.randint(-9, 99),
            float: lambda: chance.uniform(-5, 5), str: lambda: chance.choice(("", "round", "flat", "ä"))}
    objects = {label: {name: make[kind]() for name, kind in kinds.items()
                       if label == labels[0] or chance.random() < 0.8} for label in labels}
    for label in labels:
        objects[label][word] = str(label)
    table = {"maximum label": greatest, "no. of objects": len(labels)}
    for label in chance.sample(labels, len(labels)):
        table[f"{word} {label:0{digits}d}"] = objects[label]
    excluded = chance.sample(("x", "flag"), chance.choice((0, 1)))
    given = features.feature_image(table, id_key=word, excluded=excluded)
    rows = [name for name in sorted(kinds, key=key_order) if name not in excluded]
    text = f"image of {table} but {excluded}"
    expect(given.keys, [word, *rows], f"keys, {text}")
    expect(given.types, ["numeric"] + ["label" if kinds[name] is str else "numeric" for name in rows], f"types, {text}")
    expect(given.pixels[0].tolist(), [float(k) for k in range(greatest + 1)], f"labels, {text}")
    for row, name in enumerate(rows, 1):
        if kinds[name] is str:
            wanted = [objects.get(k, {}).get(name, "") for k in range(greatest + 1)]
            expect(given.column(name), wanted, f"{name}, {text}")
            expect(given.lookup[name], sorted(set(wanted), key=str.encode), f"texts of {name}, {text}")
        else:
            wanted = [f32(objects.get(k, {}).get(name, 0)) for k in range(greatest + 1)]
            expect(given.pixels[row].tolist(), wanted, f"{name}, {text}")
    columns = features.to_columns(table, id_key=word)
    expect(columns["label"].tolist(), labels, f"columns of {table}")


SIZES = ("pixel", "no. of voxels", "no. of pixels", "volume [px]")


def is_long(value):
    return isinstance(value, int) and not isinstance(value, bool)


def case_object_map(chance):
    """The first sub-map whose key begins with the prefix and a blank decides."""
    def or_other(value):
        return value if chance.random() < 0.85 else chance.choice((1.5, "text", True, 3))

    prefix = chance.choice(("object", "cell", ""))
    values = {}
    for name in ("maximum label", "no. of objects"):
        if chance.random() < 0.9:
            values[name] = or_other(3)
    for k in range(chance.randint(0, 2)):
        entry = {}
        if chance.random() < 0.9:
            entry["object"] = or_other("1")
        if chance.random() < 0.9:
            entry["status"] = or_other("valid")
        for name in chance.sample(SIZES, chance.choice((0, 1, 1, 2))):
            entry[name] = or_other(12)
        values[chance.choice(("object", "cell", "cells")) + f" {k}"] = entry if chance.random() < 0.9 else 5
    ordered = [(key, values[key]) for key in sorted(values, key=key_order)]
    maps = [value for key, value in ordered if isinstance(value, dict) and (prefix == "" or key.startswith(prefix + " "))]
    wanted = (is_long(values.get("maximum label")) and is_long(values.get("no. of objects")) and bool(maps)
              and isinstance(maps[0].get("object"), str) and isinstance(maps[0].get("status"), str)
              and any(is_long(maps[0].get(name)) for name in SIZES))
    expect(features.is_object_map(values, prefix), wanted, f"object map {values}, prefix {prefix!r}")
