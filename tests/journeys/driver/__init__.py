"""Drives penwick from outside, as a person at a screen would: real keys and clicks in an X server
of its own, and the accessibility bus to see what is on the screen."""

from .application import Application
from .session import Session
from .waiting import Timeout, until

__all__ = ["Application", "Session", "Timeout", "until"]
