"""The page decisions, written down a second time: what the filter must do with a page of given settings.

Kept apart from the product on purpose: plain arithmetic over the settings, no line shared with the C++ sources.
"""
import itertools

FEEDS = (None, "LongEdgeFirst", "ShortEdgeFirst")
ORIENTATIONS = (None, "Landscape", "Portrait", "ReverseLandscape", "ReversePortrait")
PRIVATE_SCALING = "FitApplicationImageableSizeToImageableSize"
SCALINGS = ("None", "FitApplicationMediaSizeToPageMediaSize", "FitApplicationMediaSizeToPageImageableSize",
            "FitApplicationContentSizeToPageImageableSize", "FitApplicationBleedSizeToPageImageableSize",
            "Custom", "CustomSquare", PRIVATE_SCALING)
FIT_MEDIA = "FitApplicationMediaSizeToPageMediaSize"

# The printable range of the built-in default tickets, in micrometres.
MIN_WIDTH, MIN_HEIGHT, MAX_WIDTH, MAX_HEIGHT = 76200, 127000, 215900, 355600

# Sheets by what they test; in micrometres.
MEDIA = {
    "portrait": (210000, 297000),
    "square": (200000, 200000),
    "landscape": (210001, 210000),
    "landscape A4": (297000, 210000),
    "at the maximum width": (MAX_WIDTH, 300000),
    "over the maximum width": (MAX_WIDTH + 1, 300000),
    "at the maximum height": (200000, MAX_HEIGHT),
    "over the maximum height": (200000, MAX_HEIGHT + 1),
    "at the minimum width": (MIN_WIDTH, 200000),
    "under the minimum width": (MIN_WIDTH - 1, 200000),
    "at the minimum height": (150000, MIN_HEIGHT),
    "under the minimum height": (150000, MIN_HEIGHT - 1),
}

KEYWORDS = {(210000, 297000): "ISOA4", (297000, 210000): "ISOA4Rotated"}
NEXT_ORIENTATION = {"Landscape": "Portrait", "ReverseLandscape": "ReversePortrait"}
CUSTOM_VALUES = (-1000, 2000, 90, 80)
SQUARE_VALUES = (-3000, 4000, 70, 70)


def combinations():
    """Every (feed, orientation, media name, scaling)."""
    return list(itertools.product(FEEDS, ORIENTATIONS, MEDIA, SCALINGS))


def keyword(size):
    return KEYWORDS.get(size, "CustomMediaSize")


class Job:
    """The settings that the filter carries from page to page: what a page's ticket lacks stays as it was."""

    def __init__(self, fallback):
        self.feed = "ShortEdgeFirst"
        self.orientation = "Portrait"
        self.scaling = FIT_MEDIA
        self.fallback = fallback

    def decide(self, combination):
        feed, orientation, media_name, scaling = combination
        self.feed = feed or self.feed
        self.orientation = orientation or self.orientation
        # An option of the private namespace is looked up among the public ones, where it is not: the setting stays.
        self.scaling = self.scaling if scaling == PRIVATE_SCALING else scaling
        scaling = self.scaling
        width, height = MEDIA[media_name]
        orientation = self.orientation
        if orientation in NEXT_ORIENTATION:
            width, height = height, width
            orientation = NEXT_ORIENTATION[orientation]

        turn = width <= height if self.feed == "LongEdgeFirst" else width > height
        if turn:
            width, height = height, width
        outside = not (MIN_WIDTH <= width <= MAX_WIDTH and MIN_HEIGHT <= height <= MAX_HEIGHT)

        values = {"Custom": CUSTOM_VALUES, "CustomSquare": SQUARE_VALUES}.get(scaling)
        if outside:
            if scaling == FIT_MEDIA:
                factor = min(self.fallback[0] / width, self.fallback[1] / height)
                scaling, values = "Custom", (0, 0, int(factor * 100), int(factor * 100))
            width, height = self.fallback
        return Decision(turn, turn or outside, (width, height), orientation, scaling, values)


class Decision:
    def __init__(self, turn, new_ticket, media, orientation, scaling, values):
        self.turn = turn
        self.new_ticket = new_ticket
        self.media = media
        self.option = keyword(media)
        self.orientation = orientation
        self.scaling = scaling
        self.values = values


def ticket_name(old, number):
    """The name of a page's new ticket part, as the filter gives it."""
    cut = max(old.rfind("/"), old.rfind("\\"))
    folder, file = (old, old) if cut < 0 else (old[:cut], old[cut + 1:])
    return f"{folder}\\pagevalidator_{number}_{file}"
