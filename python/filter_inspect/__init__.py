"""Rules of packet filters: what they hold, why they are refused, and what they do to packets.

The functions and classes are those of libfilter_inspect, whose answers they give.
"""

from ._core import *
from ._core import __version__ as __version__
from ._errors import Refused as Refused
