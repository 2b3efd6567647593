"use strict";

// All data of the gateway is inserted as text, never as HTML.
const find = (id) => document.getElementById(id);
// Characters that cannot be seen, or that reorder others, become \u{202e} and so on.
const visible = (text) => text.replace(/(?![\n\u200c\u200d])[\p{Cc}\p{Cf}\p{Zl}\p{Zp}]/gu,
  (character) => `\\u{${character.codePointAt(0).toString(16)}}`);
const make = (tag, properties = {}, ...children) => {
  const element = Object.assign(document.createElement(tag), properties);
  element.append(...children.map((child) => typeof child === "string" ? visible(child) : child));
  return element;
};

const token = encodeURIComponent(location.hash.slice(1));
const mostListed = 1000;
const names = new Map(); // of managers, by SAP
const opened = new Set(); // managers whose objects are shown
const drawn = new Map(); // what each part shows
let seen = 0; // the number of the last message
let control = false;

function notice(text) {
  find("notice").textContent = text;
  find("notice").hidden = text === "";
}

function connection(state) {
  find("connection").textContent = state;
  find("connection").className = state === "live" ? "live" : "lost";
}

// --- Values -------------------------------------------------------------------

function shown(value) {
  if (Array.isArray(value)) {
    return `[${value.map(shown).join(", ")}]`;
  }
  if (value !== null && typeof value === "object") {
    return `{${Object.entries(value).map(([name, part]) => `${name}=${shown(part)}`).join(" ")}}`;
  }
  return typeof value === "string" ? `"${value}"` : String(value);
}

function values(all) {
  const named = Object.entries(all ?? {}).map(([name, value]) =>
    make("span", {}, make("i", {}, `${name}=`), shown(value)));
  return make("div", { className: "values" }, ...named.flatMap((one) => [one, " "]));
}

// --- Messages -----------------------------------------------------------------

// The first column of the gateway's own line.
const verdict = (record) => record.line.split(/ {2,}/, 1)[0];

function message(record) {
  const wrong = record.complained || record.malformed !== undefined || record.foreign !== undefined;
  const who = record.sap === undefined ? "konfd" : names.get(record.sap) ?? `sap ${record.sap}`;
  const item = make("li", { className: [wrong && "complaint", record.fault && "fault"].filter(Boolean).join(" ") },
    make("div", { className: "head" },
      make("div", { className: "what" },
        make("time", { dateTime: record.time, title: record.time }, record.time.slice(11, 23)),
        make("b", {}, who),
        make("span", { className: "call" }, record.call ?? record.id ?? ""),
        make("span", { className: "object" }, record.object ?? "")),
      make("span", { className: "outcome" }, verdict(record))));
  if (record.konfd !== undefined) {
    item.append(make("div", { className: "line" }, record.konfd));
  } else if (record.values !== undefined || typeof record.answer === "object") {
    item.append(values({ ...record.values, ...(typeof record.answer === "object" ? record.answer : {}) }));
  }
  const reason = record.complaint ?? record.malformed ?? record.foreign;
  if (reason !== undefined) {
    item.append(make("div", { className: "reason" }, reason));
  }
  if (record.fault) {
    item.append(make("div", { className: "reason" }, `fault ${record.fault.number}: ${record.fault.rule}`));
  }
  item.words = `${who} ${record.line ?? ""}`.toLowerCase();
  return item;
}

function filter(item) {
  const kind = find("kind").value;
  const words = find("words").value.toLowerCase().split(/\s+/);
  item.hidden = (kind !== "" && !item.classList.contains(kind)) || !words.every((word) => item.words.includes(word));
}

function list(item) {
  filter(item);
  find("list").prepend(item);
  while (find("list").childElementCount > mostListed) {
    find("list").lastElementChild.remove();
  }
}

function refilter() {
  for (const item of find("list").children) {
    filter(item);
  }
}

function gap(count) {
  list(Object.assign(make("li", { className: "gap" }, `${counted(count, "message")} dropped: too many at once`), { words: "" }));
}

function listen() {
  const events = new EventSource(`/events?token=${token}`);
  events.onopen = () => connection("live");
  events.onmessage = (event) => {
    const record = JSON.parse(event.data);
    if (record.seq > seen) {
      if (seen !== 0 && record.seq > seen + 1) {
        gap(record.seq - seen - 1);
      }
      seen = record.seq;
      list(message(record));
      refreshSoon();
    }
  };
  events.onerror = () => {
    connection("not connected");
    if (events.readyState === EventSource.CLOSED) { // refused: the browser does not retry
      events.close();
      setTimeout(listen, 2000);
    }
  };
}

// --- What the gateway holds ---------------------------------------------------

// Redraws a part only if it has changed, so that scrolling and clicking are not disturbed.
function draw(id, data, elements) {
  const text = JSON.stringify([data, control]);
  if (drawn.get(id) !== text) {
    drawn.set(id, text);
    find(id).replaceChildren(...elements());
  }
}

const counted = (number, what) => `${number} ${what}${number === 1 ? "" : "s"}`;

function counter(text, className = "") {
  const [digits, words] = text.split(" ");
  return make("li", { className: digits === "0" ? "" : className }, make("b", {}, digits), ` ${words}`);
}

function counters({ messages, complaints, counters: { malformed, foreign, faulted } }) {
  return [counter(counted(messages, "message")),
    ...(complaints ? [counter(`${complaints} refused`, "bad")] : []),
    ...(malformed ? [counter(`${malformed} malformed`, "bad")] : []),
    ...(foreign ? [counter(`${foreign} foreign`, "bad")] : []),
    ...(faulted ? [counter(`${faulted} faulted`, "fault")] : [])];
}

function button(text, command) {
  return control ? [make("button", { type: "button", onclick: () => send(command) }, text)] : [];
}

function objects(held) {
  return Object.entries(held).flatMap(([object, calls]) => [make("h3", {}, object),
    ...Object.entries(calls).flatMap(([call, held]) => [make("div", { className: "call" }, call), values(held)])]);
}

function manager({ name, sap, served }, held) {
  const count = Object.keys(held).length;
  const title = [make("b", {}, name), " ", make("small", {},
    [`SAP ${sap}`, ...(served ? [] : ["stopped"]), ...(count ? [counted(count, "object")] : [])]
      .join(" · "))];
  const body = count === 0 ? make("span", {}, ...title)
    : make("details", { open: opened.has(name) }, make("summary", {}, ...title), ...objects(held));
  body.ontoggle = () => (body.open ? opened.add(name) : opened.delete(name));
  return make("li", { className: served ? "" : "stopped" }, body,
    ...button(served ? "stop" : "start", `${served ? "stop" : "start"} ${sap}`));
}

function rule(one) {
  return make("li", { className: one.over ? "over" : "" }, make("small", {}, String(one.number)),
    make("div", {}, make("code", {}, one.rule), make("br"),
      make("small", {}, `acted on ${one.acted} of ${counted(one.concerned, "message")}${one.over ? ", ended" : ""}`)),
    ...button("clear", `fault clear ${one.number}`));
}

function branch({ line, under }) {
  return make("li", {}, line, ...(under.length > 0 ? [make("ul", {}, ...under.map(branch))] : []));
}

function show({ control: may, watched, gateway }) {
  control = may;
  for (const element of document.querySelectorAll(".control")) {
    element.hidden = !control;
  }
  for (const one of gateway.served) {
    names.set(one.sap, one.name);
  }
  draw("counters", [gateway.messages, gateway.complaints, gateway.counters], () => counters(gateway));
  draw("rules", gateway.faults, () => gateway.faults.map(rule));
  draw("served", [gateway.served, gateway.managers],
    () => gateway.served.map((one) => manager(one, gateway.managers[one.name]?.objects ?? {})));
  draw("tree", gateway.konfd, () => gateway.konfd.map(branch));
}

// --- Requests -----------------------------------------------------------------

const unserved = "No connection to vorsim.";
let waiting = false;

function refreshSoon() {
  if (!waiting) {
    waiting = true;
    setTimeout(refresh, 250);
  }
}

async function refresh() {
  waiting = false;
  try {
    const answer = await fetch(`/state?token=${token}`);
    if (!answer.ok) {
      throw new Error(await answer.text());
    }
    const state = await answer.json();
    show(state);
    notice(state.watched ? "" : "Messages are not shown: too many clients watch the gateway.");
  } catch (error) {
    notice(error instanceof TypeError ? unserved : error.message);
  }
}

async function send(command) {
  const output = find("answer");
  let done = false;
  try {
    const answer = await fetch(`/command?token=${token}`, { method: "POST", body: command });
    done = answer.ok;
    output.textContent = await answer.text();
  } catch {
    output.textContent = unserved;
  }
  output.className = done ? "" : "wrong";
  output.hidden = output.textContent === "";
  refresh();
  return done;
}

find("faults").querySelector("form").onsubmit = async (event) => {
  event.preventDefault();
  const input = find("rule");
  if (await send(`fault add ${input.value}`)) {
    input.value = "";
  } else {
    const column = Number(/column (\d+)/.exec(find("answer").textContent)?.[1] ?? 1);
    input.focus();
    input.setSelectionRange(column - 1, input.value.length);
  }
};
find("clear").onclick = () => send("fault clear");
find("reset").onclick = () =>
  confirm("Clear all settings, konfd's tree, readings and counters?") && send("reset");
find("messages").querySelector("form").onsubmit = (event) => event.preventDefault();
find("kind").onchange = refilter;
find("words").oninput = refilter;
window.onhashchange = () => location.reload();

if (token === "") {
  connection("not connected");
  notice("The link is incomplete: open all of the link that vorsim printed, with the part after #.");
} else {
  refresh().then(listen);
  setInterval(() => document.hidden || refresh(), 2000); // rules expire and managers restart by themselves
}
