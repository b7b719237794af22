"""Who did best in a row, and how ours compares: ratios are speeds."""


def counted(result):
    return result["fault"] == "" and result["seconds"] > 0


def is_as_good(peer, ours):
    """The colours are as near and the file is as small, within a tenth."""
    return peer["error"] <= ours["error"] * 1.1 + 0.5 and peer["bytes"] <= ours["bytes"] * 1.1


def verdict(row):
    """Ours, the bound and the fastest peer whose result is as good, as far as there are any."""
    by_kind = {}
    for result in filter(counted, row["results"]):
        by_kind.setdefault(result["kind"], []).append(result)
    ours = by_kind.get("ours", [None])[0]
    bound = (by_kind.get("bound") or by_kind.get("tight") or [None])[0]
    peers = [peer for peer in by_kind.get("peer", []) if ours is None or is_as_good(peer, ours)]
    return ours, bound, min(peers, key=lambda peer: peer["seconds"], default=None)


def ratio(ours, other):
    return other["seconds"] / ours["seconds"] if ours and other else None


def speed(row, result):
    """Time of an item, in three figures."""
    value = result["seconds"] / row["items"] * 1e9
    for unit in ("ns", "us", "ms"):
        if value < 999.5:
            break
        value /= 1000
    return f"{value:.3g} {unit}"
