// The page: what the user does, and what is said about it.
//
// Address parameters, all optional:
//   obj=FILE.obj       what to open, relative to the page
//   high=TEXT low=TEXT what the ends of the legend stand for; the files themselves keep no values
//   direction=X,Y,Z    from the middle of the model towards the camera
//   wireframe          with the edges of the triangles
//   plain              no tools and no status line, for pictures

import {Vector3} from 'three';
import {loadModel} from './model.js';
import {DroppedFiles, sourceAtAddress} from './sources.js';
import {View} from './view.js';

const INVITATION = 'Drop an OBJ file, together with its MTL file and the image of the colour ramp.';

const element = (id) => document.getElementById(id);
const parameters = new URLSearchParams(location.search);
const direction = new Vector3(1, -1.4, 0.9);
const dropped = new DroppedFiles();
const view = startView();

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
    view.show(model.group);
    view.fit(direction);
    drawLegend(model.ramp);
    say(model.notes.join('\n'));
    element('status').textContent = `${objName}: ${model.vertices.toLocaleString('en')} vertices, ` +
      `${model.triangles.toLocaleString('en')} triangles`;
    document.body.dataset.state = 'ready';
  } catch (error) {
    view.show(null);
    drawLegend(null);
    say(error.message);
    element('status').textContent = '';
    document.body.dataset.state = 'failed';
  }
}

// The ramp upright: its left end, where the largest value is, on top.
function drawLegend(ramp) {
  element('legend').hidden = !ramp;
  if (!ramp) {
    return;
  }
  const bar = element('bar');
  const context = bar.getContext('2d');
  context.setTransform(0, bar.height / ramp.width, 1, 0, 0, 0);
  context.drawImage(ramp, 0, ramp.height / 2, ramp.width, 1, 0, 0, ramp.width, 1);
}

function openDropped(files) {
  dropped.add([...files]);
  if (dropped.objName) {
    open(dropped, dropped.objName);
  } else {
    say(INVITATION);
  }
}

function listen() {
  element('open').addEventListener('change', (event) => openDropped(event.target.files));
  element('fit').addEventListener('click', () => view.fit(direction));
  element('wireframe').addEventListener('change', (event) => view.setWireframe(event.target.checked));
  element('shading').addEventListener('change', (event) => view.setShading(event.target.checked));
  const keys = {f: 'fit', w: 'wireframe', s: 'shading'};
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
}

function start() {
  document.body.classList.toggle('plain', parameters.has('plain'));
  element('high').textContent = parameters.get('high') ?? 'high';
  element('low').textContent = parameters.get('low') ?? 'low';
  const given = (parameters.get('direction') ?? '').split(',').map(Number);
  if (given.length === 3 && Math.hypot(...given) > 0) {
    direction.set(...given);
  }
  listen();
  if (parameters.has('wireframe')) {
    element('wireframe').click();
  }
  if (parameters.has('obj')) {
    const obj = parameters.get('obj');
    open(sourceAtAddress(new URL(obj, location.href)), obj.split('/').pop());
  } else {
    say(INVITATION);
  }
}

start();
