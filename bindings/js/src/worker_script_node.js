// What runs in the worker of Node.js.
import {parentPort} from 'node:worker_threads';
import {serve} from './serve.js';

parentPort.on('message', serve({post: (message, transfer) => parentPort.postMessage(message, transfer)}));
