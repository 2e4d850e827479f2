// Only what a bundle holds that loads quor.wasm as a file.
import {load} from 'quor/external';

load().then((quor) => console.log(quor.mtlText()));
