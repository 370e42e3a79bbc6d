"use strict";
(function () {
  const panels = document.getElementById("panels");
  const link = document.getElementById("link");

  function el(tag, cls, parent) {
    const e = document.createElement(tag);
    if (cls) e.className = cls;
    if (parent) parent.appendChild(e);
    return e;
  }

  function meter(parent, cls, label) {
    const row = el("div", "meter " + cls, parent);
    el("span", "", row).textContent = label;
    el("div", "fill", el("div", "bar", row));
    return row;
  }

  function panelFor(address) {
    let p = document.getElementById("rx" + address);
    if (p) return p;
    p = el("section", "panel");
    p.id = "rx" + address;
    p.dataset.address = address;
    el("div", "name", p);
    el("div", "state", p);
    el("div", "freq", p);
    meter(p, "rfa", "RF A");
    meter(p, "rfb", "RF B");
    meter(p, "af", "AF");
    el("div", "battery", p);
    el("div", "mute", p);
    const after = Array.from(panels.children).find(c => Number(c.dataset.address) > address);
    panels.insertBefore(p, after || null);
    return p;
  }

  function setMeter(p, cls, level, clip) {
    const row = p.querySelector("." + cls);
    row.dataset.level = level;
    row.classList.toggle("clip", !!clip);
    row.querySelector(".fill").style.width = Math.max(0, Math.min(99, level)) / 99 * 100 + "%";
  }

  function show(rx) {
    const p = panelFor(rx.address);
    p.classList.toggle("offline", !rx.online);
    p.dataset.online = rx.online ? "1" : "0";
    p.querySelector(".name").textContent = rx.name;
    p.querySelector(".state").textContent = rx.online ? "" : "offline";
    p.querySelector(".freq").textContent = rx.freq.toFixed(3) + " MHz";
    setMeter(p, "rfa", rx.rfa);
    setMeter(p, "rfb", rx.rfb);
    setMeter(p, "af", rx.af, rx.clip);
    p.querySelector(".battery").textContent = rx.battery < 0 ? "battery ?" : "battery " + rx.battery + " %";
    const mute = p.querySelector(".mute");
    mute.textContent = rx.mute ? "MUTE" : "";
    mute.classList.toggle("on", rx.mute);
  }

  function connect() {
    const ws = new WebSocket((location.protocol === "https:" ? "wss://" : "ws://") + location.host + "/ws" + location.search);
    ws.onopen = () => { link.textContent = "live"; link.className = "up"; };
    ws.onmessage = (event) => {
      const msg = JSON.parse(event.data);
      document.getElementById("bus").textContent = msg.bus;
      // Nothing is polled: what stands is the last known state, greyed.
      document.body.classList.toggle("paused", !!msg.paused);
      document.getElementById("paused").textContent = msg.paused ? "paused" : "";
      msg.receivers.forEach(show);
    };
    ws.onclose = () => {
      link.textContent = "disconnected";
      link.className = "down";
      setTimeout(connect, 2000);
    };
  }
  connect();
})();
