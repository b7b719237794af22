"""Who did best in a row, and how ours compares: ratios are speeds."""


def counted(result):
    return result["fault"] == "" and result["seconds"] > 0


def verdict(row):
    """Ours, the bound and the fastest peer whose result is as good, as far as there are any."""
    by_kind = {}
    for result in filter(counted, row["results"]):
        by_kind.setdefault(result["kind"], []).append(result)
    ours = by_kind.get("ours", [None])[0]
    bound = (by_kind.get("bound") or by_kind.get("tight") or [None])[0]
    peers = [peer for peer in by_kind.get("peer", []) if ours is None or peer["error"] <= ours["error"] * 1.1 + 0.5]
    return ours, bound, min(peers, key=lambda peer: peer["seconds"], default=None)


def ratio(ours, other):
    return other["seconds"] / ours["seconds"] if ours and other else None


def speed(row, result):
    per_item = result["seconds"] / row["items"]
    return f"{per_item * 1e9:.3g} ns" if per_item < 1e-5 else f"{per_item * 1e6:.3g} us"
