// Draws a glTF file twice side by side: at the start of its animation and at a later frame, framed
// to fit. The page's query names the file (?file=/out.glb&seconds=0.5); window.renderDone tells the
// caller that the picture is ready (or window.renderError what went wrong).
import * as THREE from 'three';
import { GLTFLoader } from 'three/addons/loaders/GLTFLoader.js';

const params = new URLSearchParams(location.search);
const width = 1200, height = 700;
const renderer = new THREE.WebGLRenderer({ antialias: true, preserveDrawingBuffer: true });
renderer.setSize(width, height);
renderer.setScissorTest(true);
document.body.appendChild(renderer.domElement);

const scene = new THREE.Scene();
scene.background = new THREE.Color(0x20232a);
scene.add(new THREE.HemisphereLight(0xffffff, 0x444444, 1.6));
const sun = new THREE.DirectionalLight(0xffffff, 2.0);
sun.position.set(1, 2, 3);
scene.add(sun);

new GLTFLoader().load(params.get('file'), (gltf) => {
  scene.add(gltf.scene);
  const mixer = new THREE.AnimationMixer(gltf.scene);
  for (const clip of gltf.animations) mixer.clipAction(clip).play();
  const camera = new THREE.PerspectiveCamera(35, width / 2 / height, 0.01, 100);
  const views = [0, parseFloat(params.get('seconds') || '0.5')];
  views.forEach((seconds, i) => {
    mixer.setTime(seconds);
    gltf.scene.updateMatrixWorld(true);
    if (i === 0) { // frame the resting scene once: both views share the camera
      const box = new THREE.Box3().setFromObject(gltf.scene);
      const centre = box.getCenter(new THREE.Vector3());
      const size = box.getSize(new THREE.Vector3()).length();
      camera.position.set(centre.x + size * 0.5, centre.y + size * 0.3, centre.z + size * 1.7);
      camera.lookAt(centre);
    }
    renderer.setViewport(i * width / 2, 0, width / 2, height);
    renderer.setScissor(i * width / 2, 0, width / 2, height);
    renderer.render(scene, camera);
  });
  window.renderDone = true;
}, undefined, (e) => { window.renderError = String(e && e.message || e); });
