// What runs in the worker of a browser.
import {serve} from './serve.js';

const receive = serve({post: (message, transfer) => self.postMessage(message, transfer)});
self.onmessage = ({data}) => receive(data);
