"""The events that the accessibility bus sends."""

import collections

from .waiting import until

Event = collections.namedtuple("Event", "type detail1 detail2 data")


class Events:
    """Listens to events of the given types as a context manager. `wait_for` searches the events
    since the last one that it returned."""

    def __init__(self, atspi, glib, *types):
        self._atspi, self._glib, self._types = atspi, glib, types
        self._listener = None
        self._heard = collections.deque()

    def __enter__(self):
        self._listener = self._atspi.EventListener.new(self._hear)
        for type in self._types:
            self._listener.register(type)
        return self

    def __exit__(self, *_):
        for type in self._types:
            self._listener.deregister(type)

    def _hear(self, event):
        data = event.any_data if isinstance(event.any_data, str) else None
        self._heard.append(Event(event.type, event.detail1, event.detail2, data))

    def wait_for(self, type, detail1=None, detail2=None, data=None):
        """Waits for an event whose type starts with `type`, and whose details equal those given."""
        past = []

        def came():
            while self._glib.MainContext.default().iteration(False):
                pass
            while self._heard:
                event = self._heard.popleft()
                past.append(event)
                wanted = zip((detail1, detail2, data), event[1:])
                if event.type.startswith(type) and all(a in (None, b) for a, b in wanted):
                    return event
            return None

        return until(came, lambda: f"{type} {detail1} {detail2} {data!r} among {past}")
