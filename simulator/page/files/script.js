"use strict";

// All data of the gateway is inserted as text, never as HTML.
const find = (id) => document.getElementById(id);
// Characters that cannot be seen, or that reorder others, become \u{202e} and so on.
const visible = (text) => text.replace(/(?![\n\u200c\u200d])[\p{Cc}\p{Cf}\p{Zl}\p{Zp}]/gu,
  (character) => `\\u{${character.codePointAt(0).toString(16)}}`);
const make = (tag, attributes = {}, ...children) => {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    element.setAttribute(name, value);
  }
  element.append(...children.map((child) => typeof child === "string" ? visible(child) : child));
  return element;
};
const counted = (number, what) => `${number} ${what}${number === 1 ? "" : "s"}`;

const token = encodeURIComponent(location.hash.slice(1));
const mostListed = 1000;
const names = new Map(); // of managers, by SAP
const arrived = []; // messages to be listed
let state; // what the gateway holds
let failure = ""; // why there is no newer state
let streams = false; // messages arrive
let seen = 0; // the number of the last message

// --- Changing what is shown ---------------------------------------------------

// What is being clicked, has the focus or is selected must stay the same element: an element is changed only where it
// differs. Whether details are open is up to the user.
function become(node, target) {
  if (node.nodeType === Node.TEXT_NODE) {
    if (node.data !== target.data) {
      node.data = target.data;
    }
    return;
  }
  for (const { name, value } of target.attributes) {
    if (node.getAttribute(name) !== value) {
      node.setAttribute(name, value);
    }
  }
  hold(node, [...target.childNodes]);
}

const keyOf = (node, at) => node.dataset?.key ?? `${at} ${node.nodeName}`;

// Those with the same key stay, or without one those of the same kind at the same place.
function hold(parent, target) {
  const held = new Map([...parent.childNodes].map((node, at) => [keyOf(node, at), node]));
  const children = target.map((fresh, at) => {
    const node = held.get(keyOf(fresh, at)) ?? fresh;
    held.delete(keyOf(fresh, at));
    if (node !== fresh) {
      become(node, fresh);
      node.shows = fresh.shows;
    }
    return node;
  });
  const kept = new Set(children);
  for (const node of [...parent.childNodes].filter((one) => !kept.has(one))) {
    const focused = node.contains(document.activeElement);
    node.remove();
    if (focused) {
      parent.closest("section").querySelector("button, input")?.focus();
    }
  }
  children.forEach((node, at) =>
    node === parent.childNodes[at] || parent.insertBefore(node, parent.childNodes[at] ?? null));
}

// A list with a row for each entry of key and data.
function draw(id, all, row) {
  const drawn = new Map([...find(id).children].map((item) => [item.dataset.key, item]));
  hold(find(id), all.map(([key, data]) => {
    const shows = JSON.stringify(data);
    const item = drawn.get(key);
    drawn.delete(key);
    return item?.shows === shows ? item : Object.assign(make("li", { "data-key": key }, ...row(data)), { shows });
  }));
}

// While the pointer is pressed nothing moves: a click has to end where it began.
let pressed = false;
let updating = false;

function changed() {
  if (!updating) {
    updating = true;
    setTimeout(() => {
      updating = false;
      if (!pressed) {
        update();
      }
    }, 100);
  }
}

function press(is) {
  if (pressed !== is) {
    pressed = is;
    changed();
  }
}
addEventListener("pointerdown", () => press(true), true);
addEventListener("pointerup", () => press(false), true);
addEventListener("pointercancel", () => press(false), true);
addEventListener("pointermove", (event) => event.buttons === 0 && press(false), true); // it was released elsewhere

function tell(id, text) {
  if (find(id).textContent !== text) {
    find(id).textContent = text;
  }
  find(id).hidden = text === "";
}

function update() {
  const lost = failure !== "";
  const live = state !== undefined && streams && !lost;
  document.body.className = lost ? "lost" : live ? "live" : "";
  tell("connection", lost ? "not connected" : live ? "live" : "connecting");
  tell("notice", lost ? `${failure}${state ? `\nNo answer since ${state.at}: what is shown is from then.` : ""}`
    : state && !state.watched ? "Messages are not shown: too many clients watch the gateway." : "");
  if (state !== undefined) {
    show(state.gateway);
  }
  list(arrived.splice(0));
  for (const element of document.querySelectorAll(".control")) {
    element.hidden = !state?.control;
  }
  for (const element of document.querySelectorAll("#reset, form.control *, [data-command]")) {
    element.disabled = lost;
  }
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
  return make("div", { class: "values" }, ...named.flatMap((one) => [one, " "]));
}

// --- Messages -----------------------------------------------------------------

// The first column of the gateway's own line.
const verdict = (record) => record.line.split(/ {2,}/, 1)[0];

function message(record) {
  const wrong = record.complained || record.malformed !== undefined || record.foreign !== undefined;
  const who = record.sap === undefined ? "konfd" : names.get(record.sap) ?? `sap ${record.sap}`;
  const unanswered = verdict(record) === "NO ANSWER";
  const kinds = [wrong && "complaint", unanswered && "unanswered", record.fault && "fault"];
  const item = make("li", { class: kinds.filter(Boolean).join(" ") },
    make("div", { class: "head" },
      make("div", { class: "what" },
        make("time", { datetime: record.time, title: record.time }, record.time.slice(11, 23)),
        make("b", {}, who),
        make("span", { class: "call" }, record.call ?? record.id ?? ""),
        make("span", { class: "object" }, record.object ?? "")),
      make("span", { class: "outcome" }, verdict(record))));
  if (record.konfd !== undefined) {
    item.append(make("div", { class: "line" }, record.konfd));
  } else if (record.values !== undefined || typeof record.answer === "object") {
    item.append(values({ ...record.values, ...(typeof record.answer === "object" ? record.answer : {}) }));
  }
  const note = record.fault ? undefined : record.line.match(/ {2}\[([^[]*)\]$/)?.[1];
  const reason = record.complaint ?? record.malformed ?? record.foreign ?? note;
  if (reason !== undefined) {
    item.append(make("div", { class: "reason" }, reason));
  }
  if (record.fault) {
    item.append(make("div", { class: "reason" }, `fault ${record.fault.number}: ${record.fault.rule}`));
  }
  return Object.assign(item, { seq: record.seq, words: `${who} ${record.line ?? ""}`.toLowerCase() });
}

// A line between messages.
const divider = (seq, text) => Object.assign(make("li", { class: "divider" }, text), { seq });

function filter(items) {
  const kind = find("kind").value;
  const words = find("words").value.toLowerCase().split(/\s+/);
  for (const item of items.filter((one) => one.words !== undefined)) {
    item.hidden = (kind !== "" && !item.classList.contains(kind)) || !words.every((word) => item.words.includes(word));
  }
  const messages = [...find("list").children].filter((item) => item.words !== undefined);
  find("unmatched").hidden = messages.length === 0 || messages.some((item) => !item.hidden);
}

// Newest first. What is selected, or was scrolled to, stays where it is on the screen, and stays listed.
function list(records) {
  const log = find("list");
  const items = [];
  for (const record of records) {
    if (seen !== 0 && record.seq > seen + 1) {
      items.unshift(divider(record.seq - 1, `${counted(record.seq - seen - 1, "message")} dropped: too many at once`));
    }
    seen = record.seq;
    items.unshift(message(record));
  }
  const selection = getSelection();
  const isSelected = (node) => !selection.isCollapsed && selection.containsNode(node, true);
  const below = log.scrollHeight - log.scrollTop;
  const stays = log.scrollTop > 0 || isSelected(log);
  log.prepend(...items);
  divide();
  filter(items);
  if (stays) {
    log.scrollTop = log.scrollHeight - below;
  }
  const rows = [...log.children];
  for (let over = rows.length - mostListed; over > 0; --over) {
    const row = rows.pop();
    if (over > mostListed || !isSelected(row)) {
      row.remove();
    }
  }
  const before = (log.lastElementChild?.seq ?? 1) - 1;
  tell("earlier", before > 0 ? `${counted(before, "earlier message")} not listed` : "");
}

// Draws a line above the messages before the last reset.
function divide() {
  const reset = state?.gateway.reset ?? 0;
  if (seen >= reset && !find(`reset${reset}`)) {
    const older = [...find("list").children].find((row) => row.seq <= reset);
    older?.before(Object.assign(divider(reset, "Reset"), { id: `reset${reset}` }));
  }
}

function listen() {
  const events = new EventSource(`/events?token=${token}`);
  const streamed = (is) => {
    streams = is;
    changed();
  };
  events.onopen = () => streamed(true);
  events.onmessage = (event) => {
    const record = JSON.parse(event.data);
    if (record.seq > (arrived.at(-1)?.seq ?? seen)) {
      arrived.push(record);
      arrived.splice(0, arrived.length - mostListed);
      changed();
      refreshSoon();
    }
  };
  events.onerror = () => {
    streamed(false);
    if (events.readyState === EventSource.CLOSED) { // refused: the browser does not retry
      events.close();
      setTimeout(listen, 2000);
    }
  };
}

// --- What the gateway holds ---------------------------------------------------

function counter([what, number]) {
  return [make("b", {}, String(number)), ` ${what === "messages" && number === 1 ? "message" : what}`];
}

function button(text, command, what) {
  return state.control ? [make("button", { type: "button", "data-command": command, "aria-label": `${text} ${what}` }, text)]
    : [];
}

function objects(held) {
  return Object.entries(held).flatMap(([object, calls]) => [make("h3", { "data-key": object }, object),
    ...Object.entries(calls).sort().map(([call, held]) =>
      make("div", { class: "call", "data-key": `${object} ${call}` }, call, values(held)))]);
}

function manager([{ name, sap, served, without, via }, held]) {
  const count = Object.keys(held).length;
  const title = [make("b", {}, name), " ", make("small", {},
    [`SAP ${sap}`, ...(without ? ["left to another program"] : served ? [] : ["stopped"]),
      ...(via ? [`via ${via}`] : []), ...(count ? [counted(count, "object")] : [])].join(" · "))];
  return [make("i", { class: without ? "without" : served ? "" : "stopped", "aria-hidden": "true" }, "●"),
    count === 0 ? make("span", {}, ...title) : make("details", {}, make("summary", {}, ...title), ...objects(held)),
    ...(without ? [] : button(served ? "stop" : "start", `${served ? "stop" : "start"} ${sap}`, name))];
}

function rule(one) {
  return [make("small", {}, String(one.number)),
    make("div", {}, make("code", { class: one.over ? "over" : "" }, one.rule), make("br"),
      make("small", {}, `acted on ${one.acted} of ${counted(one.concerned, "message")}${one.over ? ", ended" : ""}`)),
    ...button("clear", `fault clear ${one.number}`, `rule ${one.number}`)];
}

function reading({ text, release }) {
  return [make("code", {}, text),
    ...(release ? button("release", `set ${release}`, release.slice(0, release.lastIndexOf(" "))) : [])];
}

function branch({ line, under }) {
  return [line, ...(under.length > 0
    ? [make("ul", {}, ...under.map((one) => make("li", { "data-key": one.line }, ...branch(one))))] : [])];
}

function show({ messages, complaints, counters, served, managers, faults, readings, konfd }) {
  for (const one of served) {
    names.set(one.sap, one.name);
  }
  const { invalid, malformed, foreign, faulted } = counters;
  draw("counters", Object.entries({ messages, refused: complaints, invalid, malformed, foreign, faulted })
    .filter(([what, number]) => number > 0 || what === "messages").map((one) => [one[0], one]), counter);
  draw("rules", faults.map((one) => [String(one.number), one]), rule);
  draw("served", served.map((one) => [one.name, [one, managers[one.name]?.objects ?? {}]]), manager);
  draw("held", readings.map((one) => [one.release || one.text, one]), reading);
  draw("tree", konfd.map((one) => [one.line, one]), branch);
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
    state = { ...await answer.json(), at: `${new Date().toISOString().slice(11, 19)} UTC` };
    failure = "";
  } catch (error) {
    failure = error instanceof TypeError ? unserved : error.message.trim();
  }
  changed();
}

// Its answer is shown in the section of what was clicked.
async function send(command, section) {
  const output = section.querySelector("output");
  let done = false;
  try {
    const answer = await fetch(`/command?token=${token}`, { method: "POST", body: command });
    done = answer.ok;
    output.textContent = await answer.text();
  } catch {
    output.textContent = unserved;
  }
  output.className = done ? "" : "wrong";
  refresh();
  return done;
}

addEventListener("click", (event) => {
  const { command } = event.target.closest?.("[data-command]")?.dataset ?? {};
  if (command !== undefined) {
    send(command, event.target.closest("section") ?? find("managers"));
    find("question").close();
  }
});
for (const form of document.querySelectorAll("form[data-does]")) {
  const input = form.querySelector("input");
  form.addEventListener("submit", async () => {
    if (await send(`${form.dataset.does} ${input.value}`, form.closest("section"))) {
      input.value = "";
    } else {
      const column = Number(/column (\d+)/.exec(form.nextElementSibling.textContent)?.[1] ?? 1);
      input.focus();
      input.setSelectionRange(column - 1, input.value.length);
    }
  });
}
addEventListener("submit", (event) => event.preventDefault());
find("reset").onclick = () => find("question").showModal();
find("cancel").onclick = () => find("question").close();
for (const id of ["kind", "words"]) {
  find(id).addEventListener("input", () => filter([...find("list").children]));
}
window.onhashchange = () => location.reload();

if (token === "") {
  failure = "The link is incomplete: open all of the link that vorsim printed, with the part after #.";
  update();
} else {
  refresh().then(listen);
  setInterval(() => document.hidden || refresh(), 2000); // rules expire and managers restart by themselves
}
