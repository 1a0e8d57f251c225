"""Drives penwick from outside as a user does: with real keys and clicks in a separate X server. The
accessibility bus shows what is on the screen."""

from .application import Application
from .session import Session
from .waiting import Timeout, until

__all__ = ["Application", "Session", "Timeout", "until"]
