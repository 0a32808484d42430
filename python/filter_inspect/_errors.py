"""The exception of every refusal."""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional, Tuple

if TYPE_CHECKING:
    from ._core import Report


class Refused(ValueError):
    """Something was refused, and nothing has changed. `report` says why.

    >>> import filter_inspect as fi
    >>> try:
    ...     fi.Entry(10, match={"ttl": 300})
    ... except fi.Refused as refused:
    ...     print(refused.report[0].code.value)
    text-value
    """

    __module__ = "filter_inspect"

    def __init__(self, report: "Report", sentence: Optional[str] = None) -> None:
        super().__init__(sentence or str(report))
        self.report = report

    def __reduce__(self) -> "Tuple[type[Refused], Tuple[Report, str]]":
        return type(self), (self.report, str(self))
