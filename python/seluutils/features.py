"""Features of objects as value maps, as an image, and as columns.

A value map is a dictionary of bool, int (32 bits), float, str, lists and dictionaries, whose keys are
int or str. A key with "/" is a path through the dictionaries (and, by number, through the lists)
below.

The features of objects are such a map: "maximum label", "no. of objects", and for each object its
features under a word, a blank and its label.
"""

from __future__ import annotations

from typing import Any, Dict, Literal, Mapping, NamedTuple, Sequence

import numpy as np
import numpy.typing as npt

from . import _core
from ._errors import BadParameter

__all__ = ["FeatureImage", "feature_image", "from_columns", "is_object_map", "mean", "paths", "to_columns"]

ValueMap = Dict[Any, Any]

_MODES = {"numbers": 1, "numbers and texts": 2, "all": 0}


class FeatureImage(NamedTuple):
    """The features of objects as an image.

    Examples
    --------
    >>> cells = {"maximum label": 2, "cell 1": {"kind": "b"}, "cell 2": {"kind": "a"}}
    >>> image = feature_image(cells, id_key="cell")
    >>> image.keys, image.types
    (['cell', 'kind'], ['numeric', 'label'])
    >>> image.column("kind")
    ['', 'b', 'a']
    """

    #: (rows, labels) float32: ``pixels[row, label]``; row 0 holds the labels.
    pixels: npt.NDArray[np.float32]
    #: What the rows are.
    keys: list[str]
    #: "numeric", or "label" where the pixels are indices of texts.
    types: list[str]
    #: The texts, in order, by the paths of such rows.
    lookup: ValueMap

    def column(self, key: str) -> list[Any] | npt.NDArray[np.float32]:
        """A row's values, by label.

        Parameters
        ----------
        key : str
            One of `keys`.

        Returns
        -------
        (labels,) float32, or list of str
            Entry k belongs to label k. Texts come as texts.

        Raises
        ------
        BadParameter
            For another key.

        Examples
        --------
        >>> cells = {"maximum label": 2, "cell 2": {"volume": 7}}
        >>> feature_image(cells, id_key="cell").column("volume")
        array([0., 0., 7.], dtype=float32)
        """
        if key not in self.keys:
            raise BadParameter(f'there is no feature "{key}"')
        row = self.keys.index(key)
        values: npt.NDArray[np.float32] = self.pixels[row]
        if self.types[row] != "label":
            return values
        texts: Any = self.lookup
        for part in key.split("/"):
            texts = texts[part]
        return [texts[int(index)] for index in values]


def feature_image(
    features: ValueMap, *, id_key: str = "object", excluded: Sequence[str] = ()
) -> FeatureImage:
    """The features of objects as an image: a column for each label, a row for each feature.

    Parameters
    ----------
    features : dict
        "maximum label" and the objects' maps. The first object says which features there are.
    id_key : str
        The word before the labels, and the key of row 0.
    excluded : sequence of str
        Paths of features that are left out.

    Returns
    -------
    FeatureImage
        What an object does not have is 0, or the empty text.

    Raises
    ------
    SeluError
        For a map without objects, and one whose maximum label is missing or does not fit.

    Examples
    --------
    >>> cells = {"maximum label": 2, "cell 1": {"volume": 12}, "cell 2": {"volume": 7}}
    >>> feature_image(cells, id_key="cell").column("volume")
    array([ 0., 12.,  7.], dtype=float32)
    """
    return FeatureImage(*_core.feature_image(features, id_key, list(excluded)))


def from_columns(columns: Mapping[str, npt.ArrayLike], *, id_key: str = "object") -> ValueMap:
    """The value map of a table that has the column "label".

    Parameters
    ----------
    columns : dict of arrays of one length
        The integers of "label", and any others: what :func:`seluutils.texture.object_features` gives.
    id_key : str
        The word before the labels.

    Returns
    -------
    dict
        "maximum label", "no. of objects", and a map for each row of the table.

    Raises
    ------
    BadParameter
        For a table without labels, and columns of different lengths.

    Examples
    --------
    >>> table = {"label": [1, 3], "contrast": [0.5, 2.0]}
    >>> from_columns(table)["object 3"]
    {'object': '3', 'status': 'valid', 'contrast': 2.0}
    """
    if "label" not in columns:
        raise BadParameter('the table has no column "label"')
    table = {name: np.asarray(column).tolist() for name, column in columns.items()}
    labels = table.pop("label")
    if any(len(column) != len(labels) for column in table.values()):
        raise BadParameter("the columns have different lengths")
    greatest = max(labels, default=0)
    digits = len(str(greatest))
    features: ValueMap = {"maximum label": greatest, "no. of objects": len(labels)}
    for row, label in enumerate(labels):
        features[f"{id_key} {label:0{digits}d}"] = {
            id_key: str(label),
            "status": "valid",
            **{_COUNTS.get(name, name): column[row] for name, column in table.items()},
        }
    return features


# The names by which a map of objects is known.
_COUNTS = {"voxels": "no. of voxels"}


def to_columns(features: ValueMap, *, id_key: str = "object") -> dict[str, npt.NDArray[Any]]:
    """The objects of a value map as columns, "label" first; ``pandas.DataFrame`` takes them.

    Parameters
    ----------
    features : dict
        The objects' maps under `id_key`, a blank and the label; other entries are left out.
    id_key : str
        The word before the labels.

    Returns
    -------
    dict of (objects,) arrays
        A column for each path of a number or text, in ascending order of the labels. What an object
        does not have is None, in a column of objects.

    Raises
    ------
    ValueError
        For a label that is no integer.

    Examples
    --------
    >>> cells = {"maximum label": 2, "cell 1": {"volume": 12}, "cell 2": {"volume": 7}}
    >>> to_columns(cells, id_key="cell")
    {'label': array([1, 2]), 'volume': array([12,  7])}
    """
    objects = {
        int(key[len(id_key) + 1 :]): value
        for key, value in features.items()
        if isinstance(key, str) and key.startswith(id_key + " ") and isinstance(value, dict)
    }
    labels = sorted(objects)
    names = dict.fromkeys(
        path for label in labels for path in paths(objects[label], kind="numbers and texts")
    )
    columns = {"label": np.array(labels, dtype=np.int64)}
    for name in names:
        if name != id_key:
            columns[name] = np.array([_at(objects[label], name) for label in labels])
    return columns


def _at(values: Any, path: str) -> Any:
    for part in path.split("/"):
        if isinstance(values, list):
            values = values[int(part)] if int(part) < len(values) else None
        elif isinstance(values, dict):
            values = values.get(part, values.get(int(part)) if part.isdigit() else None)
        else:
            return None
    return values


def paths(
    features: ValueMap,
    *,
    kind: Literal["numbers", "numbers and texts", "all"] = "numbers",
    excluded: Sequence[str] = (),
) -> list[str]:
    """The paths of a map's leaves, in the order of the keys.

    Parameters
    ----------
    features : dict
        A value map.
    kind : {"numbers", "numbers and texts", "all"}
        Which leaves.
    excluded : sequence of str
        Paths that are left out, with all that is below them.

    Returns
    -------
    list of str
        Keys joined by "/"; the entries of a list are numbered from 0.

    Raises
    ------
    BadParameter
        For another kind.
    TypeError
        For what is no value map.

    Examples
    --------
    >>> paths({"a": {"b": 1.5}, "c": "text", "d": [True, 2]})
    ['a/b', 'd/0', 'd/1']
    """
    if kind not in _MODES:
        raise BadParameter(f'kind must be one of {", ".join(_MODES)}, not "{kind}"')
    return _core.paths(features, _MODES[kind], list(excluded))


def mean(maps: Sequence[ValueMap], *, excluded: Sequence[str] = ()) -> ValueMap:
    """The mean of the numbers of maps, over the paths of numbers of the first.

    What a map has no number for counts as 0.

    Parameters
    ----------
    maps : sequence of dict
        Value maps, at least one.
    excluded : sequence of str
        Paths that are left out, with all that is below them.

    Returns
    -------
    dict
        The map of the means, as float.

    Raises
    ------
    BadParameter
        For no maps.
    TypeError
        For what is no value map.

    Examples
    --------
    >>> mean([{"volume": 3, "id": 1}, {"volume": 5, "id": 2}], excluded=["id"])
    {'volume': 4.0}
    """
    return _core.mean(list(maps), list(excluded))


def is_object_map(features: ValueMap, prefix: str = "object") -> bool:
    """Whether a map holds the features of objects: counts, and an object with its status and size.

    Parameters
    ----------
    features : dict
        A value map.
    prefix : str
        The word before the labels.

    Returns
    -------
    bool
        Whether "maximum label" and "no. of objects" are there, and an object that has "status" and
        "no. of voxels".

    Raises
    ------
    TypeError
        For what is no value map.

    Examples
    --------
    >>> is_object_map({"maximum label": 1})
    False
    """
    return _core.is_object_map(features, prefix)
