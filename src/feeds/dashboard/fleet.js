"use strict";
(function () {
  const linesBox = document.getElementById("lines");
  const alarmList = document.getElementById("alarms");
  const link = document.getElementById("link");
  const summary = document.getElementById("summary");
  const MAX_ALARMS = 200;
  // line name → { section, grid, panels: Map(address → element), rx: Map(address → last state) }
  const lines = new Map();

  function el(tag, cls, parent) {
    const e = document.createElement(tag);
    if (cls) e.className = cls;
    if (parent) parent.appendChild(e);
    return e;
  }

  function lineFor(name) {
    let l = lines.get(name);
    if (l) return l;
    const section = el("section", "line");
    section.dataset.line = name;
    const h = el("h2", "", section);
    el("span", "name", h).textContent = name;
    el("span", "state", h);
    el("span", "host", h);
    el("span", "found", h);
    l = { section, grid: el("div", "grid", section), panels: new Map(), rx: new Map() };
    lines.set(name, l);
    const after = Array.from(linesBox.children).find(c => c.dataset.line > name);
    linesBox.insertBefore(section, after || null);
    return l;
  }

  function panelFor(l, address) {
    let p = l.panels.get(address);
    if (p) return p;
    p = el("div", "rx");
    p.dataset.address = address;
    el("div", "nm", p);
    const bars = el("div", "bars", p);
    el("div", "fill", el("div", "bar rf", bars));
    el("div", "fill", el("div", "bar af", bars));
    el("div", "info", p);
    l.panels.set(address, p);
    const after = Array.from(l.grid.children).find(c => Number(c.dataset.address) > address);
    l.grid.insertBefore(p, after || null);
    return p;
  }

  function pad(n) { return (n < 10 ? "0" : "") + n; }

  function showReceiver(l, rx) {
    if (rx.gone) {
      const p = l.panels.get(rx.address);
      if (p) p.remove();
      l.panels.delete(rx.address);
      l.rx.delete(rx.address);
      return;
    }
    const p = panelFor(l, rx.address);
    l.rx.set(rx.address, rx);
    p.classList.toggle("offline", !rx.online);
    p.classList.toggle("alarm", !!rx.alarm);
    p.classList.toggle("muted", !!rx.mute);
    p.dataset.online = rx.online ? "1" : "0";
    p.querySelector(".nm").textContent = pad(rx.address) + " " + rx.name;
    p.querySelector(".rf .fill").style.width = Math.max(rx.rfa, rx.rfb) / 99 * 100 + "%";
    p.querySelector(".af .fill").style.width = rx.af / 99 * 100 + "%";
    const battery = rx.battery < 0 ? "?" : rx.battery + "%";
    p.querySelector(".info").textContent = rx.online ? rx.freq.toFixed(3) + " · " + battery : "offline";
  }

  function showLine(view) {
    const l = lineFor(view.line);
    l.section.classList.toggle("offline", !view.online);
    l.section.dataset.online = view.online ? "1" : "0";
    const h = l.section.querySelector("h2");
    h.querySelector(".state").textContent = view.online ? "online" : "offline";
    h.querySelector(".host").textContent = view.host;
    h.querySelector(".found").textContent = view.found + " receivers found";
    view.receivers.forEach(rx => showReceiver(l, rx));
  }

  function showAlarm(a) {
    const li = el("li", a.state);
    li.textContent = a.time.replace("T", " ").slice(0, 19) + "  " + a.line + " " + pad(a.address) + " " +
      a.name + "  " + a.kind + " " + a.state;
    alarmList.insertBefore(li, alarmList.firstChild);
    while (alarmList.children.length > MAX_ALARMS) alarmList.lastChild.remove();
  }

  function summarise() {
    let online = 0, offline = 0, alarmed = 0;
    lines.forEach(l => l.rx.forEach(rx => {
      if (rx.online && l.section.dataset.online === "1") online++; else offline++;
      if (rx.alarm) alarmed++;
    }));
    summary.textContent = lines.size + " lines · " + online + " receivers online · " + offline +
      " offline · " + alarmed + " alarmed";
  }

  function connect() {
    const ws = new WebSocket((location.protocol === "https:" ? "wss://" : "ws://") + location.host + "/ws" + location.search);
    ws.onopen = () => { link.textContent = "live"; link.className = "up"; };
    ws.onmessage = (event) => {
      const msg = JSON.parse(event.data);
      if (msg.reset) {
        lines.clear();
        linesBox.textContent = "";
        alarmList.textContent = "";
      }
      msg.lines.forEach(showLine);
      msg.alarms.forEach(showAlarm);
      summarise();
    };
    ws.onclose = () => {
      link.textContent = "disconnected";
      link.className = "down";
      setTimeout(connect, 2000);
    };
  }
  connect();
})();
