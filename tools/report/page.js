"use strict";
// The tables of tickets, the thumbnails and the lists of calls are drawn when somebody looks at them.
const STAGES = [["own", "Own"], ["asked", "Asked"], ["made", "Validated"], ["back", "Put back"], ["in_force", "In force"]];
const parsed = new Map();

function dataOf(run) {
  if (!parsed.has(run)) parsed.set(run, JSON.parse(document.getElementById("data-" + run).textContent));
  return parsed.get(run);
}

function make(tag, text, className) {
  const element = document.createElement(tag);
  // The long names of features may break between their words.
  if (text !== undefined) element.append(...String(text).split(/(?<=[a-z])(?=[A-Z])/).flatMap((word, i) => i ? [document.createElement("wbr"), word] : word));
  if (className) element.className = className;
  return element;
}

function classOf(stage, name, tickets) {
  const value = ticket => (ticket ? ticket[name] : undefined);
  const own = value(tickets.asked) ?? value(tickets.own);
  if (stage === "made" && own !== undefined && value(tickets.made) !== own) {
    return value(tickets.made) === undefined ? "gone" : "changed";
  }
  const isBack = stage === "back" && tickets.made && value(tickets.back) !== undefined;
  if (isBack && value(tickets.made) === undefined) return own === undefined ? "added" : "back";
  return isBack && value(tickets.back) !== value(tickets.made) ? "changed" : "";
}

function ticketTable(data, group) {
  const references = Object.fromEntries(STAGES.map(([stage], i) => [stage, group[i]]));
  const shown = STAGES.filter(([stage]) => references[stage] !== null);
  const tickets = Object.fromEntries(shown.map(([stage]) => [stage, data.settings[references[stage]]]));
  const names = new Set(shown.flatMap(([stage]) => Object.keys(tickets[stage] ?? {})));
  const table = make("table", undefined, "features");
  const head = table.createTHead().insertRow();
  head.append(make("th", "Feature"), ...shown.map(([, title]) => make("th", title)));
  const body = table.createTBody();
  const used = new Set();
  for (const name of names) {
    const row = body.insertRow();
    row.append(make("td", name, "feature"));
    for (const [stage, title] of shown) {
      const cell = make("td", tickets[stage]?.[name] ?? "—", classOf(stage, name, tickets));
      cell.dataset.label = title;
      if (cell.className) used.add(cell.className);
      row.append(cell);
    }
    if (new Set(shown.map(([stage]) => tickets[stage]?.[name])).size === 1) row.className = "same";
  }
  const result = [table];
  if (used.size > 0) {
    const legend = make("p", undefined, "legend quiet");
    for (const [className, text] of [["changed", "another value"], ["gone", "dropped by the device"], ["back", "put back by the filter"],
      ["added", "added by the filter"]]) {
      if (used.has(className)) legend.append(make("span", text, className));
    }
    result.push(legend);
  }
  result.push(textsOf(data, shown, references));
  return result;
}

function preformatted(text) {
  const element = document.createElement("pre");
  element.textContent = text;
  return element;
}

function textsOf(data, shown, references) {
  const details = make("details");
  details.append(make("summary", "their texts"));
  details.addEventListener("toggle", () => {
    for (const [stage, title] of shown) details.append(make("h4", title), preformatted(data.texts[references[stage]]));
  }, {once: true});
  return details;
}

function callTable(data) {
  const table = make("table");
  const head = table.createTHead().insertRow();
  for (const title of ["", "Function", "Scope", "Part", "Result"]) head.append(make("th", title));
  const body = table.createTBody();
  data.calls.forEach(([name, scope, part, result, asUser, error], i) => {
    const row = body.insertRow();
    for (const text of [i + 1, name + (asUser ? "" : " (not as the user)"), scope, part, error ? result + ": " + error : result]) {
      row.append(make("td", text));
    }
  });
  return [table];
}

function drawOnce(details, draw) {
  const fill = () => {
    const place = details.querySelector(":scope > .lazy");
    if (details.open && place && !place.hasChildNodes()) place.append(...draw(dataOf(details.dataset.run)));
  };
  details.addEventListener("toggle", fill);
  whenNear(details, fill);
}

const waiting = new Map();
const watcher = new IntersectionObserver(entries => {
  for (const entry of entries) if (entry.isIntersecting) showNow(entry.target);
}, {rootMargin: "600px"});
function whenNear(element, action) {
  waiting.set(element, action);
  watcher.observe(element);
}
function showNow(element) {
  const action = waiting.get(element);
  waiting.delete(element);
  watcher.unobserve(element);
  if (action) action();
}

function drawThumbnails(item) {
  const images = dataOf(item.dataset.run).pages[item.dataset.page];
  ["before", "after"].forEach((name, i) => {
    const image = item.querySelector("img." + name);
    if (images[i]) {
      image.src = images[i];
      image.classList.add("drawn");
    } else {
      image.remove();
    }
  });
  if (!images[0] || !images[1]) item.querySelector(".arrow").remove();
}

for (const details of document.querySelectorAll("details.tickets")) {
  drawOnce(details, data => ticketTable(data, data.groups[details.dataset.group]));
}
for (const details of document.querySelectorAll("details.all-calls")) drawOnce(details, callTable);
for (const item of document.querySelectorAll(".pages li")) {
  if (item.querySelector(".thumbs")) whenNear(item, () => drawThumbnails(item));
}
// Paper shows everything that is open.
addEventListener("beforeprint", () => [...waiting.keys()].forEach(showNow));
