"""How far apart two pictures are. Pictures are arrays [line, column, RGBA]."""

import numpy as np


def shifted(a, dx, dy, fill):
    """The value of the neighbour at (dx, dy)."""
    out = np.full_like(a, fill)
    h, w = a.shape[:2]
    out[max(0, -dy) : h - max(0, dy), max(0, -dx) : w - max(0, dx)] = a[max(0, dy) : h - max(0, -dy), max(0, dx) : w - max(0, -dx)]
    return out


def border(mask):
    """Pixels inside that have a neighbour outside; the picture's own edge is no border."""
    inner = mask.copy()
    for dx, dy in ((1, 0), (-1, 0), (0, 1), (0, -1)):
        inner &= shifted(mask, dx, dy, True)
    return mask & ~inner


def border_distance(a, b):
    """The longest way, along lines, columns or diagonals, from a border pixel of one mask to the nearest of the other."""
    if a.any() != b.any():
        return float("inf")
    one, other = np.argwhere(border(a)), np.argwhere(border(b))
    if len(one) == 0 or len(other) == 0:
        return 0 if len(one) == len(other) else float("inf")
    far = 0
    for near_to, points in ((one, other), (other, one)):
        for p in points:
            far = max(far, int(np.abs(near_to - p).max(axis=1).min()))
    return far


# Darker colours than this part of a picture's brightest one count as that.
DARK = 0.1
# Neighbours that differ by more lie across an edge.
EDGE = 0.1
# Side of the areas whose mean colours are compared, and how many pixels an area needs. Single pixels would say how each
# renderer samples where a face's border runs or where a ball turns away from the light.
AREA, LEAST = 4, 8


def floor_of(rgb):
    return np.maximum(rgb, DARK * rgb.max())


def even(picture):
    """Pixels whose neighbours are there and have nearly their colour: no edge of anything runs through them."""
    whole = picture[:, :, 3] > 0.999
    rgb = picture[:, :, :3]
    out = whole.copy()
    for dy in (-1, 0, 1):
        for dx in (-1, 0, 1):
            out &= shifted(whole, dx, dy, False)
            out &= (np.abs(shifted(rgb, dx, dy, 0.0) - rgb) < EDGE * floor_of(rgb)).all(axis=2)
    return out


def area_sums(values):
    """Sums over areas; what is left over at the picture's edge is dropped."""
    h, w = (n // AREA * AREA for n in values.shape[:2])
    cut = values[:h, :w].reshape(h // AREA, AREA, w // AREA, AREA, -1)
    return cut.sum(axis=(1, 3))


def compare(ours, theirs):
    """Distance of the silhouettes in pixels, largest and mean difference of the areas' colours as parts of the other's,
    and the share of the silhouette's pixels that were compared."""
    inside = even(ours) & even(theirs)
    counts = area_sums(inside[:, :, None].astype(float))
    used = counts[:, :, 0] >= LEAST
    one, other = (area_sums(p[:, :, :3] * inside[:, :, None])[used] / counts[used] for p in (ours, theirs))
    values = (np.abs(one - other) / np.maximum(other, DARK * theirs[:, :, :3].max())).max(axis=1)
    shown = theirs[:, :, 3] > 0.5
    return {
        "silhouette": border_distance(ours[:, :, 3] > 0.5, shown),
        "largest": float(values.max()) if len(values) else float("inf"),
        "mean": float(values.mean()) if len(values) else float("inf"),
        "compared": float(counts[used].sum() / max(1, shown.sum())),
    }
