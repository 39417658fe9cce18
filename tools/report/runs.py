"""What a report of filterhost says, in the terms of a page to look at."""
import collections

import tickets
from thumbnails import thumbnails

MM = 25.4 / 96
VERDICTS = {0: ("good", "done"), 1: ("bad", "the filter failed"), 2: ("bad", "wrong usage"),
            3: ("bad", "unreadable input"), 4: ("bad", "a rule was broken")}
STAGES = ("own", "asked", "made", "back", "in_force")
SCOPES = {"FixedDocumentSequence": "Job", "FixedDocument": "Document", "FixedPage": "Page"}
# A finding that comes with every page is told once, with the first few of its texts.
MOST_TEXTS = 5


def view_of(reports, to_path, most_thumbnails):
    """All that the page shows, of several reports. `to_path` gives the path of a document here for one in the report."""
    runs = [Run(report, each, to_path, most_thumbnails) for report in reports for each in report["inputs"]]
    for number, run in enumerate(runs, 1):
        run.id = f"input-{number}"
    worst = max((run.status for run in runs), default=0)
    return {"runs": runs, "reports": reports, "verdict": VERDICTS[worst], "problems": problems_of(runs),
            "decides": any(run.decides for run in runs), "several_devices": len({run.device for run in runs}) > 1,
            "totals": {"inputs": len(runs), "pages": sum(run.pages_in for run in runs),
                       "turned": sum(run.turned for run in runs), "tickets": sum(run.new_tickets for run in runs),
                       "breaches": sum(len(run.breaches) for run in runs),
                       "findings": sum(len(run.findings) for run in runs)},
            "data": {run.id: run.data for run in runs}}


def problems_of(runs):
    """What has to be looked at, the causes first: crashes, breaches, the failures that follow, findings; each kind once
    an input."""
    found = []
    for run in runs:
        found += [{"run": run, "kind": "failure", "id": "", "texts": [text], "count": 1, "advice": "", "where": where,
                   "order": 2 if follows else 0} for text, where, follows in run.failures]
        for kind, problems in (("breach", run.breaches), ("finding", run.findings)):
            for each in problems:
                same = next((other for other in found if other["run"] is run and other["id"] == each["id"]), None)
                if same is None:
                    where = ", ".join(filter(None, (each["call"], each["part"])))
                    same = {"run": run, "kind": kind, "id": each["id"], "texts": [], "count": 0,
                            "advice": each["advice"], "where": where, "order": 1 if kind == "breach" else 3}
                    found.append(same)
                same["count"] += 1
                if len(same["texts"]) < MOST_TEXTS:
                    same["texts"].append(each["text"])
    return sorted(found, key=lambda problem: problem["order"])


def size_text(width, height):
    if width is None or height is None:
        return "unknown size"
    return f"{width * MM:.0f} × {height * MM:.0f} mm"


def file_name(path):
    return path.replace("\\", "/").rpartition("/")[2]


class Run:
    """One input, and what became of it."""

    def __init__(self, report, each, to_path, most_thumbnails):
        self.each = each
        self.name = file_name(each["input"])
        self.input, self.output = each["input"], each["output"]
        self.status = each["status"]
        self.verdict = VERDICTS[self.status]
        self.device = report["device"]["name"]
        self.filters = report["filters"]
        self.pages_in, self.pages_out = each["pages_in"], each["pages_out"]
        self.bytes_out = each["bytes_out"]
        self.breaches, self.findings = each["breaches"], each["findings"]
        self.missing = each["missing"]
        self.filter_calls = each["filter_calls"]
        self.times = time_shares(each.get("seconds"))
        self.failures = failures_of(each)
        self.settings = [tickets.settings_of(text) for text in each["texts"]]
        pages = [part for part in each["parts"] if part["kind"] == "FixedPage"]
        self.decides = any(decides(page) for page in pages)
        self.turned = sum(page["turned"] and decides(page) for page in pages if "turned" in page)
        self.new_tickets = sum(bool(page.get("ticket_replaced")) for page in pages)
        self.provider_calls = count_calls(each["provider_calls"])
        self.scopes = self.ticket_groups()
        self.pages = self.page_rows(pages, to_path, most_thumbnails)
        self.data = self.lazy_data()

    def ticket_groups(self):
        """Parts with one and the same tickets at every stage, together: (scope, parts, a text of each stage)."""
        back = self.put_back()
        went_on = {}  # of the wider scopes so far: what the device made, and what the filter went on with
        groups = {}
        number = 0
        for index, part in enumerate(self.each["parts"]):
            if part["kind"] not in SCOPES:
                continue
            number += part["kind"] == "FixedPage"
            stages = dict(part["tickets"], back=back[index])
            if part["kind"] != "FixedPage" and back[index] is not None:
                went_on[stages["made"]] = back[index]
            if part["kind"] != "FixedPage" or stages["made"] is None:
                stages["in_force"] = went_on.get(stages["in_force"], stages["in_force"])
            key = (SCOPES[part["kind"]], tuple(stages[stage] for stage in STAGES))
            if all(text is None for text in key[1]):
                continue
            groups.setdefault(key, []).append(number if part["kind"] == "FixedPage" else part["uri"])
        return [{"scope": scope + ("s" if scope == "Page" and len(parts) > 1 else ""),
                 "parts": numbers_text(parts) if scope == "Page" else names_text(parts), "stages": stages}
                for (scope, stages), parts in groups.items()]

    def put_back(self):
        """For each part the ticket with what the filter put back into what the device made: the one that it gave the
        page; for a wider scope the base on which it had the next narrower ticket made."""
        parts = self.each["parts"]
        bases = {}
        for call in self.each["provider_calls"]:
            if call["function"] == "PTMergeAndValidatePrintTicket" and call["part"] is not None:
                bases.setdefault(call["part"], call["base"])
        back = [part["tickets"]["new"] for part in parts]
        for index, part in enumerate(parts):
            narrower = {"FixedDocumentSequence": ("FixedDocument", "FixedPage"), "FixedDocument": ("FixedPage",)}
            if part["kind"] not in narrower or back[index] is not None or part["tickets"]["made"] is None:
                continue
            for other in parts[index + 1:]:
                if other["kind"] == part["kind"]:
                    break
                base = bases.get(f"{other['kind']} {other['uri']}")
                if other["kind"] in narrower[part["kind"]] and base is not None:
                    back[index] = base
                    break
        return back

    def page_rows(self, pages, to_path, most_thumbnails):
        changed = [number for number, page in enumerate(pages, 1) if page.get("markup_rewritten") or page["tickets"]["new"]]
        rest = [number for number in range(1, len(pages) + 1) if number not in set(changed)]
        wanted = (changed + rest)[:most_thumbnails]
        before = thumbnails(to_path(self.input), wanted)
        after = thumbnails(to_path(self.output), wanted) if self.output else {}
        return [page_row(number, page, before.get(number), after.get(number)) for number, page in enumerate(pages, 1)]

    def lazy_data(self):
        """What the page draws when it comes into view."""
        return {"settings": self.settings, "texts": self.each["texts"],
                "groups": [group["stages"] for group in self.scopes],
                "pages": [[page["before"], page["after"]] for page in self.pages],
                "calls": [[call["function"], call["scope"] or "", call["part"] or "", call["result"], call["as_user"],
                           call["error"] or ""] for call in self.each["provider_calls"]]}


def decides(page):
    """Which way a page is to lie is no question for a filter that has to do with no tickets."""
    return bool(page.get("feed") or page.get("sheet"))


def page_row(number, page, before, after):
    # A page that the filter made has only the one size.
    sizes = size_text(page.get("width_out"), page.get("height_out"))
    decisions = []
    decided = decides(page)
    if decided and page.get("turned"):
        decisions.append(("turned", "turned by a right angle"))
    elif page.get("markup_rewritten"):
        decisions.append(("turned", "rewritten, not turned" if decided else "rewritten"))
    else:
        decisions.append(("", "not turned" if decided else "left as it was"))
    if page.get("markup_rewritten"):
        sizes = size_text(page["width_in"], page["height_in"]) + " → " + sizes
    if page.get("ticket_replaced"):
        decisions.append(("ticket", "new ticket" if page["ticket_out"] else "ticket removed"))
    elif page["ticket_in"]:
        decisions.append(("", "own ticket kept"))
    facts = [f"sheet {page['sheet']}" if page.get("sheet") else "", f"fed {page['feed']}" if page.get("feed") else ""]
    return {"number": number, "uri": page["uri"], "sizes": sizes, "decisions": decisions,
            "facts": ", ".join(filter(None, facts)), "before": before, "after": after}


def failures_of(each):
    """(text, where, whether it is likely to follow from a breach) of what ended the run."""
    found = [(text, "", False) for text in each["errors"] + each["input_failures"]]
    crash, end = each["crash"], each["end"]
    if crash:
        found.append((crash["text"], ", ".join(filter(None, (*crash["calls"], crash["part"]))), False))
    elif end and not end["whole"] and not end["cancelled"] and not each["input_failures"]:
        found.append((f"{end['filter'] or 'the filter'} ended with {end['result']}", "", True))
    elif end and end["cancelled"]:
        found.append((f"the job was cancelled; the filter ended with {end['result']}", "", True))
    return found


def time_shares(seconds):
    """(kind, title, seconds, part of them all) of each share of the time; none where it was not measured."""
    if not seconds:
        return []
    several = len(seconds["filters"]) > 1
    shares = []
    for each in seconds["filters"]:
        name = each["name"] if several else "the filter"
        of = " of " + each["name"] if several else ""
        shares += [("filter", name, each["filter"]), ("provider", "print ticket provider" + of, each["ticket_provider"] or 0),
                   ("pipeline", "pipeline" + of, each["pipeline"])]
    shares.append(("rest", "reading, looking and writing", seconds["rest"]))
    whole = sum(share for _, _, share in shares) or 1
    return [(kind, title, share, share / whole) for kind, title, share in shares if share > 0]


def count_calls(calls):
    """(function, how often, how often it failed, how often as the job's user) in the order of their first call."""
    counts = collections.OrderedDict()
    for call in calls:
        count = counts.setdefault(call["function"], [0, 0, 0])
        count[0] += 1
        count[1] += int(call["result"].split()[0], 16) >= 0x80000000
        count[2] += call["as_user"]
    return [(function, *count) for function, count in counts.items()]


def names_text(names):
    """Of many the first few."""
    return ", ".join(names[:4]) + (f" and {len(names) - 4} more" if len(names) > 4 else "")


def numbers_text(numbers):
    """[1, 2, 3, 5] as "1–3, 5"."""
    pieces = []
    for number in numbers:
        if pieces and pieces[-1][1] == number - 1:
            pieces[-1][1] = number
        else:
            pieces.append([number, number])
    text = ", ".join(str(first) if first == last else f"{first}–{last}" for first, last in pieces[:12])
    return text + (", …" if len(pieces) > 12 else "")
