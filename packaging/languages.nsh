; The installer's own texts; those of its pages come with NSIS. Windows' language chooses among them;
; where it is none of these they are English, the first. $3 is where something lies: one folder, or two with
; AND_IN between them.
!macro Texts LANGUAGE WITH_WINDOWS RUNNING REMOVE AND_IN OTHERS
!insertmacro MUI_LANGUAGE "${LANGUAGE}"
LangString WithWindows ${LANG_${LANGUAGE}} "${WITH_WINDOWS}"
LangString Running ${LANG_${LANGUAGE}} "${RUNNING}"
LangString Remove ${LANG_${LANGUAGE}} "${REMOVE}"
LangString AndIn ${LANG_${LANGUAGE}} "${AND_IN}"
LangString Others ${LANG_${LANGUAGE}} "${OTHERS}"
!macroend

!insertmacro Texts English \
  "Start with Windows, in the notification area" \
  "Quellix is running. Close it and go on?" \
  "Remove your settings, lists and logs of runs in $3 as well? Backups and plug-ins of your own stay." \
  " and in " \
  "$APPDATA\Quellix stays too: it may be another copy's."

!insertmacro Texts German \
  "Mit Windows starten, im Infobereich" \
  "Quellix läuft. Schließen und fortfahren?" \
  "Auch Ihre Einstellungen, Listen und Protokolle von Läufen in $3 entfernen? Sicherungen und eigene Plug-ins bleiben." \
  " und in " \
  "Auch $APPDATA\Quellix bleibt: Der Ordner kann zu einer anderen Kopie gehören."

!insertmacro Texts French \
  "Démarrer avec Windows (zone de notification)" \
  "Quellix est en cours d'exécution. Le fermer et continuer ?" \
  "Supprimer aussi vos paramètres, vos listes et les journaux de nettoyage dans $3 ? Les sauvegardes et vos propres plug-ins sont conservés." \
  " et dans " \
  "$APPDATA\Quellix est conservé aussi : ce dossier appartient peut-être à une autre copie."

!insertmacro Texts Spanish \
  "Iniciar con Windows, en el área de notificación" \
  "Quellix se está ejecutando. ¿Cerrarlo y continuar?" \
  "¿Quitar también su configuración, sus listas y los informes de limpieza de $3? Las copias de seguridad y sus propios complementos se conservan." \
  " y de " \
  "También se conserva $APPDATA\Quellix: puede ser de otra copia."

!insertmacro Texts PortugueseBR \
  "Iniciar com o Windows, na área de notificação" \
  "O Quellix está em execução. Fechá-lo e continuar?" \
  "Remover também suas configurações, listas e logs de limpeza em $3? Os backups e seus próprios plug-ins permanecem." \
  " e em " \
  "$APPDATA\Quellix também permanece: pode ser de outra cópia."

!insertmacro Texts Italian \
  "Avvia con Windows, nell'area di notifica" \
  "Quellix è in esecuzione. Chiuderlo e continuare?" \
  "Rimuovere anche le impostazioni, gli elenchi e i log di pulizia in $3? I backup e i plug-in personali restano." \
  " e in " \
  "Resta anche $APPDATA\Quellix: può essere di un'altra copia."

!insertmacro Texts Polish \
  "Uruchamiaj z Windows, obok zegara" \
  "Program Quellix jest uruchomiony. Zamknąć go i kontynuować?" \
  "Usunąć także ustawienia, listy i dzienniki czyszczenia z $3? Kopie zapasowe i własne wtyczki pozostaną." \
  " i z " \
  "Pozostanie też $APPDATA\Quellix: może należeć do innej kopii programu."

!insertmacro Texts Japanese \
  "Windows と同時に通知領域で開始" \
  "Quellix は実行中です。閉じて続行しますか?" \
  "$3 にある設定、リスト、実行のログも削除しますか? バックアップと自分で追加したプラグインは残ります。" \
  " と " \
  "$APPDATA\Quellix も残ります。別のコピーのものである可能性があります。"

!insertmacro Texts SimpChinese \
  "随 Windows 启动，显示在通知区域" \
  "Quellix 正在运行。要关闭它并继续吗？" \
  "是否同时删除 $3 中的设置、列表和清理日志？备份和您自己的插件会保留。" \
  " 和 " \
  "$APPDATA\Quellix 也会保留：它可能属于另一个副本。"
