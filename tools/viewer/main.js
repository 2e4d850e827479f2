// The page: what the user does, and what is said about it.
//
// Address parameters, all optional:
//   obj=FILE.obj               what to open, relative to the page
//   minimum=NUMBER maximum=NUMBER unit=TEXT field=TEXT title=TEXT
//                              what the colours mean, instead of what the JSON beside the OBJ says
//   high=TEXT low=TEXT         words for the ends of the legend in place of numbers
//   direction=X,Y,Z            from the middle of the model towards the camera
//   up=y, up=z                 the axis that points up
//   isolines=0                 without lines of equal value
//   wireframe=                 with the edges of the triangles
//   plain=                     no tools and no status line, for pictures

import {Vector3} from 'three';
import {drawLegend} from './legend.js';
import {loadModel} from './model.js';
import {whyNotObj} from './obj_text.js';
import {guessUp} from './orientation.js';
import {readInfo, Scale} from './scale.js';
import {DroppedFiles, FilesInPage, sourceAtAddress} from './sources.js';
import {View} from './view.js';

const INVITATION = 'Drop an OBJ file of quor here, together with its MTL and JSON files and the image ' +
  'of the colour ramp.';

const element = (id) => document.getElementById(id);
const parameters = new URLSearchParams(location.search);
const dropped = new DroppedFiles();
const view = startView();
// What is shown: the model of model.js, its scale (null without a field), the axis that is up, and the
// direction from which it is looked at.
let shown = null;

function startView() {
  try {
    return new View(element('view'));
  } catch (error) {
    say(`This browser draws no 3D graphics (WebGL): ${error.message}`);
    throw error;
  }
}

function say(text) {
  element('message').textContent = text;
}

async function open(source, objName) {
  document.body.dataset.state = 'loading';
  say('');
  element('status').textContent = `Reading ${objName} …`;
  // Large files take seconds: let the line above appear first.
  await new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve)));
  try {
    const model = await loadModel(source, objName);
    const {info, notes} = await readInfo(source, objName.replace(/\.obj$/i, '.json'));
    const scale = model.ends && new Scale(model.rampEnds, {...info, ...givenInfo()});
    show(model, scale);
    say([...model.notes, ...notes].join('\n'));
    document.title = `${scale?.title || objName} - quor viewer`;
    element('status').textContent = `${objName}: ${model.vertices.toLocaleString('en')} vertices, ` +
      `${model.triangles.toLocaleString('en')} triangles`;
    document.body.dataset.state = 'ready';
  } catch (error) {
    fail(error.message);
  }
}

// What the address says about the values.
function givenInfo() {
  const words = ['title', 'field', 'unit'];
  const given = Object.fromEntries([...parameters].filter(([name]) => words.includes(name)));
  const [minimum, maximum] = ['minimum', 'maximum'].map((name) => parseFloat(parameters.get(name)));
  if (minimum < maximum && Number.isFinite(minimum) && Number.isFinite(maximum)) {
    Object.assign(given, {minimum, maximum, error: undefined});  // which is that of other values
  }
  return given;
}

function show(model, scale) {
  const up = parameters.get('up');
  shown = {model, scale, up: ['y', 'z'].includes(up) ? up : guessUp(model.group)};
  view.show(model.group);
  drawLegend(model.ramp, scale, {high: parameters.get('high'), low: parameters.get('low')});
  showIsolines();
  look();
}

function fail(reason) {
  shown = null;
  view.show(null);
  drawLegend(null);
  say(reason);
  element('status').textContent = '';
  document.body.dataset.state = 'failed';
}

function look() {
  element('up').textContent = `${shown?.up ?? 'z'} up`;
  if (shown) {
    view.setUp(shown.up);
    shown.direction = givenDirection() ?? view.bestDirection(shown.up, shown.model.ends);
    view.fit(shown.direction);
  }
}

function givenDirection() {
  const numbers = (parameters.get('direction') ?? '').split(',').map(Number);
  const length = Math.hypot(...numbers);
  return numbers.length === 3 && length > 0 && Number.isFinite(length) ? new Vector3(...numbers) : null;
}

function showIsolines() {
  view.setIsolines(element('isolines').checked ? shown?.scale ?? null : null);
}

// A link may name files of the place that this page is from, and of no other.
function openAddress(obj) {
  let address;
  try {
    address = new URL(obj, location.href);
  } catch {
    address = null;
  }
  if (address?.protocol === location.protocol && address.host === location.host) {
    open(sourceAtAddress(address), obj.split(/[/\\]/).pop());
  } else {
    fail(`${obj} is not opened: it is not a file of the place that this page is from.`);
  }
}

function openDropped(files) {
  dropped.add([...files]);
  const reason = [...files].map(({name}) => whyNotObj(name)).find((text) => text);
  if (reason && ![...files].some(({name}) => /\.obj$/i.test(name))) {
    fail(reason);
  } else if (dropped.objName) {
    open(dropped, dropped.objName);
  } else {
    say(`${INVITATION} There is no OBJ among what was dropped.`);
  }
}

// The value under the pointer, beside it.
function probe(event) {
  const box = element('view').getBoundingClientRect();
  const [x, y] = [event.clientX - box.left, event.clientY - box.top];
  const u = shown?.scale ? view.fieldAt(x, y) : null;
  element('probe').hidden = u === null;
  if (u === null) {
    return;
  }
  element('probe').textContent = Number.isNaN(u) ? 'no value' : shown.scale.format(shown.scale.valueAt(u));
  const toTheLeft = x > box.width / 2;
  element('probe').style.left = `${x + (toTheLeft ? -14 : 14)}px`;
  element('probe').style.top = `${y}px`;
  element('probe').style.transform = `translate(${toTheLeft ? '-100%' : '0'}, -120%)`;
}

// Probes once per picture, however often the pointer reports.
function listenToPointer() {
  let last = null;
  const move = (event) => {
    if (last === null) {
      requestAnimationFrame(() => {
        probe(last);
        last = null;
      });
    }
    last = event;
  };
  element('view').addEventListener('pointermove', move);
  element('view').addEventListener('pointerdown', move);
  element('view').addEventListener('pointerleave', () => {
    element('probe').hidden = true;
  });
}

function listen() {
  element('open').addEventListener('change', (event) => openDropped(event.target.files));
  element('fit').addEventListener('click', () => shown && view.fit(shown.direction));
  element('up').addEventListener('click', () => {
    if (shown) {
      shown.up = shown.up === 'z' ? 'y' : 'z';
      look();
    }
  });
  element('isolines').addEventListener('change', showIsolines);
  element('wireframe').addEventListener('change', (event) => view.setWireframe(event.target.checked));
  element('shading').addEventListener('change', (event) => view.setShading(event.target.checked));
  const keys = {f: 'fit', u: 'up', i: 'isolines', w: 'wireframe', s: 'shading'};
  addEventListener('keydown', (event) => {
    if (!event.ctrlKey && !event.metaKey && !event.altKey) {
      element(keys[event.key])?.click();
    }
  });
  addEventListener('dragover', (event) => {
    event.preventDefault();
    document.body.classList.add('dropping');
  });
  addEventListener('dragleave', () => document.body.classList.remove('dropping'));
  addEventListener('drop', (event) => {
    event.preventDefault();
    document.body.classList.remove('dropping');
    openDropped(event.dataTransfer.files);
  });
  listenToPointer();
}

function start() {
  document.body.classList.toggle('plain', parameters.has('plain'));
  listen();
  if (parameters.get('isolines') === '0') {
    element('isolines').click();
  }
  if (parameters.has('wireframe')) {
    element('wireframe').click();
  }
  const inPage = new FilesInPage(document);
  if (parameters.has('obj')) {
    openAddress(parameters.get('obj'));
  } else if (inPage.objName) {
    open(inPage, inPage.objName);
  } else {
    say(INVITATION);
  }
}

start();
