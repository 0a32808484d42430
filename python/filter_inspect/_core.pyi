# The types of the module that libfilter_inspect makes. The members of the enumerations have the
# names that libfilter_inspect gives its values.

import array
import enum
import mmap
from typing import (
    Any,
    Callable,
    Dict,
    Generic,
    Iterable,
    Iterator,
    List,
    Mapping,
    Optional,
    Sequence,
    SupportsBytes,
    Tuple,
    TypeVar,
    Union,
    final,
    overload,
)

_Buffer = Union[bytes, bytearray, memoryview, mmap.mmap, "array.array[int]"]
_Progress = Optional[Callable[[int, int], object]]
# Values are written with str(), so networks and addresses of the module ipaddress are accepted too.
_Words = Union[str, Mapping[str, object], Iterable[object]]
_Counters = Union[str, Mapping[int, object], Iterable[object]]
_Policer = Union[None, str, Mapping[str, object], Iterable[object]]

_T = TypeVar("_T")

__version__: str

# begin generated
class Code(str, enum.Enum):
    MATCH_NOT_ADMITTED = 'match-not-admitted'
    ACTION_NOT_ADMITTED = 'action-not-admitted'
    POLICER_STAGE = 'policer-stage'
    TYPE_NOT_ADMITTED = 'type-not-admitted'
    STAGE_UNKNOWN = 'stage-unknown'
    TYPE_UNKNOWN = 'type-unknown'
    IP_VERSION_CONFLICT = 'ip-version-conflict'
    DST_PORT_CONFLICT = 'dst-port-conflict'
    COUNTER_TYPE_INVALID = 'counter-type-invalid'
    COUNTER_TYPE_TAKEN = 'counter-type-taken'
    MATCH_CODE_UNKNOWN = 'match-code-unknown'
    BYTES_BROKEN = 'bytes-broken'
    REBUILD_THROWS = 'rebuild-throws'
    REQUIRED_MISSING = 'required-missing'
    FIELD_UNKNOWN = 'field-unknown'
    FIELD_WIRE_TYPE = 'field-wire-type'
    FIELD_UNUSED = 'field-unused'
    FIELD_REPEATED = 'field-repeated'
    FIELD_DEFAULTED = 'field-defaulted'
    VALUE_CUT = 'value-cut'
    VALUE_COLLAPSED = 'value-collapsed'
    BYTES_SHORT = 'bytes-short'
    BYTES_LONG = 'bytes-long'
    MATCH_UNKNOWN = 'match-unknown'
    ACTION_UNKNOWN = 'action-unknown'
    MATCH_REFUSED = 'match-refused'
    MATCH_REPLACED = 'match-replaced'
    ACTION_REPLACED = 'action-replaced'
    COUNTER_REPLACED = 'counter-replaced'
    POLICER_REWRITTEN = 'policer-rewritten'
    ENTRY_REFUSED = 'entry-refused'
    ENTRY_REPLACED = 'entry-replaced'
    TRAILING_ZERO = 'trailing-zero'
    ENCODING_DIFFERS = 'encoding-differs'
    ORDER_DIFFERS = 'order-differs'
    STAGE_TYPE_PAIR = 'stage-type-pair'
    COUNTER_UNUSUAL = 'counter-unusual'
    TEXT_SYNTAX = 'text-syntax'
    TEXT_VERSION = 'text-version'
    TEXT_VALUE = 'text-value'
    TEXT_REPEATED = 'text-repeated'
    TEXT_CONTRADICTION = 'text-contradiction'
    HEAD_CHANGED = 'head-changed'
    ENTRY_ADDED = 'entry-added'
    ENTRY_REMOVED = 'entry-removed'
    ENTRY_CHANGED = 'entry-changed'
    NO_PLAN = 'no-plan'
    ENTRY_UNREACHABLE = 'entry-unreachable'
    ENTRIES_TIE = 'entries-tie'
    VALUE_UNUSUAL = 'value-unusual'
    TREATMENT_DIFFERS = 'treatment-differs'
    ENTRY_REDUNDANT = 'entry-redundant'
    ENTRIES_OVERLAP = 'entries-overlap'
    NOT_DECIDED = 'not-decided'
    NO_DIFFERENCE = 'no-difference'
    ADMITS = 'admits'
    PLACEMENT = 'placement'
    NO_PLACEMENT = 'no-placement'
    PLAN_STEP = 'plan-step'
    TRACED = 'traced'
    TRACE_UNDECIDED = 'trace-undecided'
    TRACED_ENTRY = 'traced-entry'
    PACKETS_GO = 'packets-go'
    PACKETS_MAY_GO = 'packets-may-go'
    PACKETS_MATCH = 'packets-match'
    PACKETS_LEFT = 'packets-left'
    FRAMES_COUNTED = 'frames-counted'
    ENTRY_HIT = 'entry-hit'
    ENTRY_NOT_HIT = 'entry-not-hit'
    NO_ENTRY_HIT = 'no-entry-hit'
    FRAMES_NOT_READ = 'frames-not-read'
    TRAFFIC_DIFFERS = 'traffic-differs'
    TRAFFIC_OPEN = 'traffic-open'
    USAGE = 'usage'
    FILE_UNREADABLE = 'file-unreadable'
    OUTPUT_FAILED = 'output-failed'
    LIMIT_EXCEEDED = 'limit-exceeded'
    POLICY_HOLDS = 'policy-holds'
    POLICY_FAILS = 'policy-fails'
    POLICY_OPEN = 'policy-open'
    ACCEPT_STALE = 'accept-stale'

class FrameFault(str, enum.Enum):
    NONE = 'none'
    CUT = 'cut'
    ENDS_EARLY = 'ends-early'
    WRONG_LENGTH = 'wrong-length'
    WRONG_VERSION = 'wrong-version'
    UNKNOWN_LINK = 'unknown-link'
    ENCAPSULATED = 'encapsulated'
    LATER_FRAGMENT = 'later-fragment'

class Hit(str, enum.Enum):
    MISS = 'miss'
    HIT = 'hit'
    UNDECIDED = 'undecided'

class Link(str, enum.Enum):
    ETHERNET = 'ethernet'
    RAW = 'raw'
    LINUX_COOKED = 'linux-cooked'
    LINUX_COOKED_2 = 'linux-cooked-2'
    LOOPBACK = 'loopback'

class Order(str, enum.Enum):
    UNSPECIFIED = 'unspecified'
    HIGHEST_PRIORITY = 'highest-priority'
    LOWEST_PRIORITY = 'lowest-priority'
    ASCENDING_ID = 'ascending-id'
    HIGHEST_PRIORITY_ASCENDING_ID = 'highest-priority,ascending-id'
    HIGHEST_PRIORITY_DESCENDING_ID = 'highest-priority,descending-id'
    LOWEST_PRIORITY_ASCENDING_ID = 'lowest-priority,ascending-id'
    LOWEST_PRIORITY_DESCENDING_ID = 'lowest-priority,descending-id'

class Result(str, enum.Enum):
    OK = 'ok'
    NOT_FOUND = 'not_found'
    INVALID = 'invalid'
    INVALID_ARGUMENT = 'invalid_argument'
    MATCH_NOT_ALLOWED = 'match_not_allowed'
    TYPE_NOT_ALLOWED = 'type_not_allowed'
    INVALID_STAGE = 'invalid_stage'
    ACTION_NOT_ALLOWED = 'action_not_allowed'
    POLICER_STAGE = 'policer_stage'

class Severity(str, enum.Enum):
    NOTE = 'note'
    WARNING = 'warning'
    ERROR = 'error'

class Stage(str, enum.Enum):
    NONE = 'none'
    LOOKUP = 'lookup'
    INGRESS = 'ingress'
    EGRESS = 'egress'

class Subject(str, enum.Enum):
    GROUP = 'group'
    ENTRY = 'entry'
    MATCH = 'match'
    ACTION = 'action'
    POLICER = 'policer'
    PARENT = 'parent'
    COUNTER = 'counter'

class Type(int, enum.Enum):
    NONE = 0
    TYPE_1 = 1
    TYPE_2 = 2
    TYPE_3 = 3
    TYPE_4 = 4
    TYPE_5 = 5
    TYPE_6 = 6
    TYPE_7 = 7
    TYPE_8 = 8
    TYPE_9 = 9
    TYPE_10 = 10
    TYPE_11 = 11

# end generated
@final
class Finding:
    @property
    def code(self) -> Code: ...
    @property
    def severity(self) -> Severity: ...
    @property
    def result(self) -> Result: ...
    @property
    def subject(self) -> Subject: ...
    @property
    def group(self) -> Optional[int]: ...
    @property
    def group_number(self) -> Optional[int]: ...
    @property
    def entry(self) -> Optional[int]: ...
    @property
    def offender(self) -> int: ...
    @property
    def admitted(self) -> List[int]: ...
    @property
    def others(self) -> List[int]: ...
    @property
    def path(self) -> str: ...
    @property
    def bytes(self) -> Optional[Tuple[int, int]]: ...
    @property
    def before(self) -> str: ...
    @property
    def after(self) -> str: ...
    @property
    def witness(self) -> str: ...
    @property
    def message(self) -> str: ...
    @property
    def step(self) -> str: ...
    @property
    def value(self) -> str: ...
    @property
    def treatment(self) -> str: ...
    @property
    def lacking(self) -> List[str]: ...
    @property
    def word(self) -> str: ...

@final
class Report(Sequence[Finding]):
    def __len__(self) -> int: ...
    def __bool__(self) -> bool: ...
    @overload
    def __getitem__(self, index: int) -> Finding: ...
    @overload
    def __getitem__(self, index: slice) -> List[Finding]: ...
    @property
    def left_out(self) -> int: ...
    @property
    def worst(self) -> Severity: ...
    def to_json(
        self, command: str = ..., file: str = ..., *, order: Union[None, str, Order] = ...
    ) -> str: ...

@final
class Entry:
    def __init__(
        self,
        id: int,
        *,
        priority: int = ...,
        match: Optional[_Words] = ...,
        then: Optional[_Words] = ...,
        count: Optional[_Counters] = ...,
        police: _Policer = ...,
        parent: _Policer = ...,
    ) -> None: ...
    @staticmethod
    def from_bytes(data: _Buffer) -> Entry: ...
    @staticmethod
    def from_text(text: str) -> Entry: ...
    @staticmethod
    def from_json(json: str) -> Entry: ...
    @staticmethod
    def from_dict(values: Dict[str, Any]) -> Entry: ...
    def to_bytes(self) -> bytes: ...
    def __bytes__(self) -> bytes: ...
    def to_text(self) -> str: ...
    def to_json(self, *, compact: bool = ...) -> str: ...
    def to_dict(self) -> Dict[str, Any]: ...
    @property
    def id(self) -> int: ...
    @property
    def priority(self) -> int: ...
    @property
    def match(self) -> Dict[str, Optional[str]]: ...
    @property
    def then(self) -> Dict[str, Optional[str]]: ...
    @property
    def count(self) -> Dict[int, str]: ...
    @property
    def police(self) -> Optional[str]: ...
    @property
    def parent(self) -> Optional[str]: ...
    def __hash__(self) -> int: ...

@final
class Entries(Mapping[int, Entry]):
    def __getitem__(self, id: int) -> Entry: ...
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[int]: ...

class _Setting(Generic[_T]):
    """A stage or type, which can be set to more kinds of values than it has."""

    def __get__(self, group: Group, kind: Any = ...) -> Union[int, _T]: ...
    def __set__(self, group: Group, value: Union[str, int, _T]) -> None: ...

@final
class Group:
    def __init__(
        self,
        id: int,
        *,
        priority: int = ...,
        stage: Union[str, int, Stage] = ...,
        type: Union[str, int, Type] = ...,
        entries: Union[Iterable[Entry], Mapping[int, Entry]] = ...,
    ) -> None: ...
    @staticmethod
    def from_bytes(data: _Buffer) -> Group: ...
    @staticmethod
    def from_text(text: str) -> Group: ...
    @staticmethod
    def from_json(json: str) -> Group: ...
    @staticmethod
    def from_dict(values: Dict[str, Any]) -> Group: ...
    def to_bytes(self) -> bytes: ...
    def __bytes__(self) -> bytes: ...
    def to_text(self) -> str: ...
    def to_json(self, *, compact: bool = ...) -> str: ...
    def to_dict(self) -> Dict[str, Any]: ...
    @property
    def id(self) -> int: ...
    priority: int
    stage: _Setting[Stage]
    type: _Setting[Type]
    __hash__: None  # type: ignore[assignment]
    @property
    def entries(self) -> Entries: ...
    def insert(self, entry: Entry) -> None: ...
    def remove(self, id: int) -> None: ...

@final
class Plan:
    @property
    def steps(self) -> List[str]: ...
    @property
    def fewest(self) -> bool: ...
    def __len__(self) -> int: ...

@final
class Policy:
    def __init__(self, text: str) -> None: ...
    @property
    def groups(self) -> List[int]: ...
    def promises(self, group: int) -> int: ...

@final
class Traced:
    @property
    def entry(self) -> int: ...
    @property
    def hit(self) -> Hit: ...
    @property
    def lacking(self) -> List[str]: ...
    @property
    def reason(self) -> str: ...

@final
class Trace:
    @property
    def outcome(self) -> Hit: ...
    @property
    def entry(self) -> Optional[int]: ...
    @property
    def entries(self) -> List[Traced]: ...
    @property
    def candidates(self) -> List[int]: ...
    @property
    def may_be_none(self) -> bool: ...
    @property
    def at_most(self) -> bool: ...
    @property
    def treatment(self) -> str: ...
    @property
    def treatments(self) -> List[str]: ...

@final
class FrameCount:
    @property
    def frames(self) -> int: ...
    @property
    def first(self) -> int: ...

@final
class EntryHits:
    @property
    def entry(self) -> int: ...
    @property
    def sure(self) -> FrameCount: ...
    @property
    def possible(self) -> FrameCount: ...

@final
class Hits:
    @property
    def frames(self) -> int: ...
    @property
    def decided(self) -> FrameCount: ...
    @property
    def undecided(self) -> FrameCount: ...
    @property
    def entries(self) -> List[EntryHits]: ...
    @property
    def none_sure(self) -> FrameCount: ...
    @property
    def none_possible(self) -> FrameCount: ...
    @property
    def faults(self) -> Dict[FrameFault, FrameCount]: ...

def match_names() -> List[str]: ...
def action_names() -> List[str]: ...
def decode(
    data: _Buffer, *, max_findings: int = ..., max_bytes: int = ...
) -> Tuple[Optional[Group], Report]: ...
def decode_entry(
    data: _Buffer, *, max_findings: int = ..., max_bytes: int = ...
) -> Tuple[Optional[Entry], Report]: ...
def groups_from_text(text: str) -> List[Group]: ...
def groups_from_json(json: str) -> List[Group]: ...
def groups_to_text(groups: Iterable[Group]) -> str: ...
def groups_to_json(groups: Iterable[Group], *, compact: bool = ...) -> str: ...
def explain_insert(group: Group, entry: Entry) -> Report: ...
def diff(old: Group, new: Group) -> Report: ...
def plan(old: Group, new: Group, *, remove_first: bool = ...) -> Plan: ...
def apply(plan: Plan, group: Group) -> None: ...
def analyse(
    group: Group,
    order: Union[str, Order] = ...,
    *,
    redundant: bool = ...,
    overlaps: bool = ...,
    max_findings: int = ...,
    max_steps: int = ...,
    progress: _Progress = ...,
) -> Report: ...
def compare_treatment(
    old: Group,
    new: Group,
    order: Union[str, Order],
    *,
    max_findings: int = ...,
    max_steps: int = ...,
    progress: _Progress = ...,
) -> Report: ...
def explain_changes(
    old: Group,
    new: Group,
    order: Union[str, Order],
    *,
    packets: Optional[str] = ...,
    max_findings: int = ...,
    max_steps: int = ...,
    progress: _Progress = ...,
) -> Report: ...
def search(
    group: Group,
    packets: str,
    order: Union[str, Order],
    *,
    then: Optional[str] = ...,
    touching: bool = ...,
    entry: Optional[int] = ...,
    max_findings: int = ...,
    max_steps: int = ...,
    progress: _Progress = ...,
) -> Report: ...
def check_policy(
    group: Group, policy: Policy, *, max_steps: int = ..., progress: _Progress = ...
) -> Report: ...
def trace(group: Group, packet: str, order: Union[str, Order]) -> Trace: ...
@overload
def hits(
    group: Group,
    frames: Iterable[SupportsBytes],
    order: Union[str, Order],
    *,
    link: Union[str, Link] = ...,
    assumed: str = ...,
    progress: _Progress = ...,
) -> Hits: ...
@overload
def hits(
    group: Group,
    frames: _Buffer,
    order: Union[str, Order],
    *,
    link: Union[str, Link] = ...,
    assumed: str = ...,
    offsets: Iterable[int],
    lengths: Optional[Iterable[int]] = ...,
    wire_lengths: Optional[Iterable[int]] = ...,
    progress: _Progress = ...,
) -> Hits: ...
